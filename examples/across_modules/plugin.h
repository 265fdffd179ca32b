// SPDX-License-Identifier: Apache-2.0
// The C interface of a plug-in. No exception may cross it.
#pragma once

#if defined(_WIN32)
#define PLUGIN_EXPORT __declspec(dllexport)
#else
#define PLUGIN_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

/// Runs a job. Returns null, or an error that the caller owns: pass it to ul::P<ul::CError>::adopt().
PLUGIN_EXPORT void* runJob(const char* cipherID);
}
