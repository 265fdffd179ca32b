// SPDX-License-Identifier: Apache-2.0
/// \file
/// HMAC over any digest. All functions are stateless and safe from any thread.
#pragma once

#include "sarn/object_model.h"

struct evp_md_st;
/// libcrypto's description of a digest.
typedef struct evp_md_st EVP_MD;

namespace sarn {

/// The HMAC (RFC 2104) of a message, in place of what `out` held. The message comes before the key.
///
/// \param md libcrypto's description of the digest
/// \throws ul::CInvalidArgError "invalid data size" if `dataSize` is negative, "input overlaps output" if the message
///         lies in `out`, or the key, and `out` has room for less than 64 bytes; ul::CError "Error computing HMAC
///         digest." if libcrypto fails. The used size of `out` is unchanged then.
SARN_EXPORT void calcHMAC(ul::TBuffer<unsigned char>& out, const EVP_MD* md, const void* data, int dataSize,
                          const void* key, int keySize);

/// calcHMAC() with MD5: 16 bytes. For data of old backups.
SARN_EXPORT void calcHMAC_MD5(ul::TBuffer<unsigned char>& out, const void* data, int dataSize, const void* key,
                              int keySize);

/// calcHMAC() with SHA-1: 20 bytes.
SARN_EXPORT void calcHMAC_SHA1(ul::TBuffer<unsigned char>& out, const void* data, int dataSize, const void* key,
                               int keySize);

} // namespace sarn
