// SPDX-License-Identifier: Apache-2.0
// What a plug-in offers its host: C functions, through which no exception may pass.
#pragma once

#if defined(_WIN32)
#define PLUGIN_EXPORT __declspec(dllexport)
#else
#define PLUGIN_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

/// Runs a job. Returns null if that worked, else an error that the caller owns: pass it to
/// ul::P<ul::CError>::adopt().
PLUGIN_EXPORT void* runJob(const char* cipherID);
}
