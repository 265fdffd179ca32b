// SPDX-License-Identifier: Apache-2.0
/// \file
/// Marks exported declarations of the library.
#pragma once

/// \def SARN_EXPORT
/// Marks an exported declaration. It expands to nothing on Windows if `SARN_STATIC_LIBRARY` is defined.

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
