// SPDX-License-Identifier: Apache-2.0
/// \file
/// Keys from passwords. The function is stateless and safe from any thread.
#pragma once

#include "sarn/export.h"

namespace sarn {

/// Derives `keySize` bytes from a password by PBKDF2 with HMAC-SHA1 (RFC 8018) and writes them to `key`. Requires:
/// `key` does not overlap another argument. The caller owns and wipes the key.
///
/// A password size of -1 means up to the terminating null character. libcrypto validates the arguments, and versions
/// differ: 3.x refuses an iteration count of 0, 1.1.1 treats it as 1.
/// \throws ul::CError "Error deriving cryptographic key from password." if libcrypto refuses the arguments or fails, if
///         the salt or the key has a negative size, or if either is null and its size is not 0.
SARN_EXPORT void deriveKey_PKCS5_PBKDF2_HMAC_SHA1(const void* password, int passwordSize, const void* salt,
                                                  int saltSize, int iterations, int keySize, void* key);

} // namespace sarn
