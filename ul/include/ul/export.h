// SPDX-License-Identifier: Apache-2.0
/// \file
/// Marks what the base library exports.
#pragma once

/// \def UL_EXPORT
/// Stands before what ul exports; as `UL_STATIC_LIBRARY` tells, also for static libraries.

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
