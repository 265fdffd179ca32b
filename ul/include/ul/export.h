// SPDX-License-Identifier: Apache-2.0
/// \file
/// Marks exported declarations of the base library.
#pragma once

/// \def UL_EXPORT
/// Marks an exported declaration. It expands to nothing on Windows if `UL_STATIC_LIBRARY` is defined.

#if defined(_WIN32)
#if defined(UL_BUILDING_LIBRARY)
#define UL_EXPORT __declspec(dllexport)
#elif defined(UL_STATIC_LIBRARY)
#define UL_EXPORT
#else
#define UL_EXPORT __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define UL_EXPORT __attribute__((visibility("default")))
#else
#define UL_EXPORT
#endif
