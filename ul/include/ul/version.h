// SPDX-License-Identifier: Apache-2.0
/// \file
/// The version of the base library, which the libraries above it share: semantic, see docs/abi.md.
#pragma once

#include "ul/export.h"

// The one place where the version is written: the build reads it from here.
/// Changes when programs must be compiled anew.
#define UL_VERSION_MAJOR 1
/// Changes when something was added.
#define UL_VERSION_MINOR 0
/// Changes when something was mended.
#define UL_VERSION_PATCH 0

/// The version of these headers as one number that grows, for the preprocessor: 1.2.3 is 10203.
#define UL_VERSION (UL_VERSION_MAJOR * 10000 + UL_VERSION_MINOR * 100 + UL_VERSION_PATCH)

/// The same for people: "1.2.3".
#define UL_VERSION_TEXT                                                                                                \
    UL_VERSION_QUOTE(UL_VERSION_MAJOR) "." UL_VERSION_QUOTE(UL_VERSION_MINOR) "." UL_VERSION_QUOTE(UL_VERSION_PATCH)
/// Used by UL_VERSION_TEXT: replaces the name by its number before UL_VERSION_QUOTE_NUMBER makes text of it.
#define UL_VERSION_QUOTE(name) UL_VERSION_QUOTE_NUMBER(name)
/// Used by UL_VERSION_QUOTE.
#define UL_VERSION_QUOTE_NUMBER(number) #number

namespace ul {

/// The version of the library that was loaded, as UL_VERSION: at least that of the headers, with the same major
/// version. Safe from any thread.
UL_EXPORT int getVersion() noexcept;

/// The same for people, for example "1.0.0": null-terminated, valid for as long as the process runs. Safe from any
/// thread.
UL_EXPORT const char* getVersionText() noexcept;

} // namespace ul
