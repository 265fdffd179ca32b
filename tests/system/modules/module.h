// SPDX-License-Identifier: Apache-2.0
// The interface of a module: a shared library that uses this one and is loaded by a program.
#pragma once

#include "sarn/cipher.h"
#include "sarn/digest.h"

#include <array>

#ifdef _WIN32
#define SARN_TEST_MODULE_EXPORT __declspec(dllexport)
#else
#define SARN_TEST_MODULE_EXPORT __attribute__((visibility("default")))
#endif

namespace sarn_test {

/// The error classes of both libraries. `none` comes last.
enum class ErrorKind { error, invalidArgument, badState, badPath, file, versionMismatch, configSignature, none };

/// The addresses of the process-wide objects of both libraries.
using GlobalObjects = std::array<const void*, 7>;

struct Module {
    GlobalObjects (*getGlobalObjects)();
    void (*raise)(ErrorKind kind);
    /// The class of the error that `action` raises.
    ErrorKind (*classify)(void (*action)(ErrorKind), ErrorKind argument);
    ul::P<sarn::IDigest> (*createDigest)(const char* id);
    /// Feeds "abc", finishes and releases the digest, and returns the first byte of the result.
    int (*finishAndRelease)(ul::P<sarn::IDigest> digest);
    /// Appends to a buffer that another module may have allocated.
    void (*encrypt)(const ul::TCryptBuffer<unsigned char>& key, const ul::String& text,
                    ul::TBuffer<unsigned char>& out);
    /// Registers a cipher whose class belongs to the module.
    void (*registerCipher)(const char* id);
    /// Makes a call of every family. Returns whether all results are right.
    bool (*useEveryFamily)();
};

} // namespace sarn_test

extern "C" SARN_TEST_MODULE_EXPORT const sarn_test::Module* getModule();
