// SPDX-License-Identifier: Apache-2.0
/// \file
/// HMAC with any digest. All functions are stateless and safe from any thread.
#pragma once

#include "sarn/object_model.h"

struct evp_md_st;
/// libcrypto's description of a digest.
typedef struct evp_md_st EVP_MD;

namespace sarn {

/// Computes the HMAC (RFC 2104) of a message and replaces the content of `out` by it. The message comes before the key,
/// unlike in libcrypto's HMAC().
///
/// \param md libcrypto's description of the digest
/// \throws ul::CInvalidArgError "invalid data size" if `dataSize` is negative, "input overlaps output" if the message
///         or the key is inside `out` and `out` has room for less than 64 bytes; ul::CError "Error computing
///         HMAC digest." if libcrypto fails. The used size of `out` is unchanged then.
SARN_EXPORT void calcHMAC(ul::TBuffer<unsigned char>& out, const EVP_MD* md, const void* data, int dataSize,
                          const void* key, int keySize);

/// calcHMAC() with MD5: 16 bytes. For old backups.
SARN_EXPORT void calcHMAC_MD5(ul::TBuffer<unsigned char>& out, const void* data, int dataSize, const void* key,
                              int keySize);

/// calcHMAC() with SHA-1: 20 bytes.
SARN_EXPORT void calcHMAC_SHA1(ul::TBuffer<unsigned char>& out, const void* data, int dataSize, const void* key,
                               int keySize);

} // namespace sarn
