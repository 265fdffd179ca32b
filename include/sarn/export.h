// SPDX-License-Identifier: Apache-2.0
/// \file
/// Marks what the library exports.
#pragma once

/// \def SARN_EXPORT
/// Stands before what sarn exports; as `SARN_STATIC_LIBRARY` tells, also for static libraries.

#if defined(_WIN32)
#if defined(SARN_BUILDING_LIBRARY)
#define SARN_EXPORT __declspec(dllexport)
#elif defined(SARN_STATIC_LIBRARY)
#define SARN_EXPORT
#else
#define SARN_EXPORT __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define SARN_EXPORT __attribute__((visibility("default")))
#else
#define SARN_EXPORT
#endif
