// SPDX-License-Identifier: Apache-2.0
// What a module, a shared library of its own that uses the library, offers to the program that loads it.
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

/// The error classes of both libraries; none is the last.
enum class ErrorKind {
    error,
    invalidArgument,
    badState,
    badPath,
    file,
    versionMismatch,
    configSignature,
    none,
};

/// Addresses of the process-wide objects of both libraries, as one module sees them.
using GlobalObjects = std::array<const void*, 7>;

struct Module {
    GlobalObjects (*getGlobalObjects)();
    /// Throws an error of that class.
    void (*raise)(ErrorKind kind);
    /// What `action` throws, told by its class.
    ErrorKind (*classify)(void (*action)(ErrorKind), ErrorKind argument);
    ul::P<sarn::IDigest> (*createDigest)(const char* id);
    /// Feeds "abc", finishes, gives up the reference and returns the first byte of the result.
    int (*finishAndRelease)(ul::P<sarn::IDigest> digest);
    /// Allocates blocks of a buffer that another module may have begun.
    void (*encrypt)(const ul::TCryptBuffer<unsigned char>& key, const ul::String& text,
                    ul::TBuffer<unsigned char>& out);
    /// Registers a cipher whose class is the module's own.
    void (*registerCipher)(const char* id);
    /// Makes a call of every family; returns whether each gave the right result.
    bool (*useEveryFamily)();
};

} // namespace sarn_test

extern "C" SARN_TEST_MODULE_EXPORT const sarn_test::Module* getModule();
