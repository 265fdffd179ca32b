// SPDX-License-Identifier: Apache-2.0
// Owners of libcrypto's objects. scripts/check-tree ensures that no other file calls a function that frees one.
#pragma once

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <memory>

namespace sarn {

struct CipherContextDeleter {
    void operator()(EVP_CIPHER_CTX* context) const noexcept {
        EVP_CIPHER_CTX_reset(context);
        EVP_CIPHER_CTX_free(context);
    }
};
/// Owns a cipher context. Resets it before freeing it.
using CipherContextPtr = std::unique_ptr<EVP_CIPHER_CTX, CipherContextDeleter>;

struct BioDeleter {
    void operator()(BIO* chain) const noexcept { BIO_free_all(chain); }
};
/// Owns a chain of BIOs.
using BioPtr = std::unique_ptr<BIO, BioDeleter>;

struct KeyDeleter {
    void operator()(EVP_PKEY* key) const noexcept { EVP_PKEY_free(key); }
};
/// Owns a key.
using KeyPtr = std::unique_ptr<EVP_PKEY, KeyDeleter>;

#if OPENSSL_VERSION_NUMBER >= 0x30000000L && defined(OPENSSL_SUPPRESS_DEPRECATED)
struct HMACContextDeleter {
    void operator()(HMAC_CTX* context) const noexcept { HMAC_CTX_free(context); }
};
/// Owns the context of an HMAC. For files that may use what libcrypto 3 deprecates.
using HMACContextPtr = std::unique_ptr<HMAC_CTX, HMACContextDeleter>;
#endif

/// Frees the objects of a signing or verifying session. Sessions hold plain pointers, because a failed construction
/// must not free the context. Hosts rely on the order: the context is reset, then freed, then the key is freed.
inline void freeSession(EVP_MD_CTX* context, EVP_PKEY* key) noexcept {
    EVP_MD_CTX_reset(context);
    EVP_MD_CTX_free(context);
    EVP_PKEY_free(key);
}

} // namespace sarn
