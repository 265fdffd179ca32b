// SPDX-License-Identifier: Apache-2.0
/// \file
/// The versions of the library and of libcrypto.
#pragma once

#include "sarn/export.h"

#include "ul/version.h"

/// The version of these headers as one increasing number, for the preprocessor: 1.2.3 is 10203. Equal to UL_VERSION.
#define SARN_VERSION UL_VERSION

namespace sarn {

/// The version of the loaded library, in the form of SARN_VERSION. It is at least that of the headers and has the same
/// major version. Safe from any thread.
SARN_EXPORT int getVersion() noexcept;

/// The version of the loaded library as text, for example "1.0.0". Null-terminated, valid until the process ends. Safe
/// from any thread.
SARN_EXPORT const char* getVersionText() noexcept;

/// The version that the loaded libcrypto reports: 0x1010117f is 1.1.1w, 0x300000b0 is 3.0.11. Saved digest states do
/// not depend on it. Safe from any thread.
SARN_EXPORT unsigned long getLibcryptoVersion() noexcept;

/// The version of the loaded libcrypto as text, for example "OpenSSL 1.1.1w  11 Sep 2023". Null-terminated, valid while
/// libcrypto is loaded. Safe from any thread.
SARN_EXPORT const char* getLibcryptoVersionText() noexcept;

} // namespace sarn
