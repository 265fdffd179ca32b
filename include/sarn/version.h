// SPDX-License-Identifier: Apache-2.0
/// \file
/// The versions of the library and of the libcrypto under it.
#pragma once

#include "sarn/export.h"

#include "ul/version.h"

/// The version of these headers as one number that grows, for the preprocessor: 1.2.3 is 10203. It is the base
/// library's.
#define SARN_VERSION UL_VERSION

namespace sarn {

/// The version of the library that was loaded, as SARN_VERSION: at least that of the headers, with the same major
/// version. Safe from any thread.
SARN_EXPORT int getVersion() noexcept;

/// The same for people, for example "1.0.0": null-terminated, valid for as long as the process runs. Safe from any
/// thread.
SARN_EXPORT const char* getVersionText() noexcept;

/// The version of the libcrypto that was loaded, as it states it itself: 0x1010117f is 1.1.1w, 0x300000b0 is 3.0.11.
/// Saved digest states do not depend on it. Safe from any thread.
SARN_EXPORT unsigned long getLibcryptoVersion() noexcept;

/// The same for people, for example "OpenSSL 1.1.1w  11 Sep 2023": null-terminated, valid for as long as libcrypto is
/// loaded. Safe from any thread.
SARN_EXPORT const char* getLibcryptoVersionText() noexcept;

} // namespace sarn
