// SPDX-License-Identifier: Apache-2.0
// Owners of libcrypto's objects. No other file calls a function that frees one: scripts/check-tree looks.
#pragma once

#include <openssl/bio.h>
#include <openssl/evp.h>

#include <memory>

namespace sarn {

struct CipherContextDeleter {
    void operator()(EVP_CIPHER_CTX* context) const noexcept {
        EVP_CIPHER_CTX_reset(context);
        EVP_CIPHER_CTX_free(context);
    }
};
/// Owns a cipher context; it is reset before it is freed.
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

/// Frees what a signer or a verifier holds. These own plain pointers, since a construction that fails has to leave the
/// context to nobody. Hosts rely on the order: the context is reset, then freed, then the key is freed.
inline void freeSession(EVP_MD_CTX* context, EVP_PKEY* key) noexcept {
    EVP_MD_CTX_reset(context);
    EVP_MD_CTX_free(context);
    EVP_PKEY_free(key);
}

} // namespace sarn
