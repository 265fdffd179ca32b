// SPDX-License-Identifier: Apache-2.0
/// \file
/// Keys from passwords. The function is stateless and safe from any thread.
#pragma once

#include "sarn/export.h"

namespace sarn {

/// PBKDF2 with HMAC-SHA1 (RFC 8018): derives `keySize` bytes from a password into `key`, which must lie apart from the
/// other arguments. The caller owns and wipes the key.
///
/// The arguments are libcrypto's to judge: what version 3 refuses, an iteration count of 0 for example, may pass as 1
/// in 1.1.1. A password size of -1 means up to its terminating zero.
/// \throws ul::CError "Error deriving cryptographic key from password." if it refuses them or fails, if the salt or the
///         key has a negative size, and if it is null and its size is not 0
SARN_EXPORT void deriveKey_PKCS5_PBKDF2_HMAC_SHA1(const void* password, int passwordSize, const void* salt,
                                                  int saltSize, int iterations, int keySize, void* key);

} // namespace sarn
