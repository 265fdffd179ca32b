// SPDX-License-Identifier: Apache-2.0
/// \file
/// Base64, HMAC and key derivation. All functions are stateless and safe from any thread.
#pragma once

#include "sarn/object_model.h"

struct evp_md_st;
/// libcrypto's description of a digest.
typedef struct evp_md_st EVP_MD;

namespace sarn {

/// The Base64 text (RFC 4648, section 4) of `size` bytes.
///
/// \param keepPadding false removes the "=" at the end; it has no effect with line breaks, which stand after them
/// \param lineBreaks  true puts a line feed after every 64 characters and after the last one
/// \throws ul::CError "Internal error: error during base64 encode." if `size` is negative or libcrypto fails
SARN_EXPORT ul::String base64Encode(const void* data, int size, bool keepPadding, bool lineBreaks);

/// Decodes Base64 text into `out`, in place of what it held.
///
/// Spaces, tabs, line feeds and carriage returns do not count; missing padding is completed. Text that is not Base64
/// is noticed by the length of the result, with a tolerance of 3 bytes: docs/base64.md says which damage that lets
/// pass. \throws ul::CInvalidArgError "invalid base64 data"; the used size of `out` is unchanged then. ul::CError
/// "Internal
///         error: error during base64 decode." if libcrypto fails
SARN_EXPORT void base64Decode(const ul::String& text, ul::TBuffer<unsigned char>& out);

/// Replaces the bytes in `buffer` by their Base64 text: lines of at most 64 characters, each followed by "\r\n".
/// \throws as base64Encode() does; the buffer is unchanged then
SARN_EXPORT void base64EncodeBufferWithCRLF(ul::TBuffer<unsigned char>& buffer);

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
