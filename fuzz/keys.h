// SPDX-License-Identifier: Apache-2.0
// Texts of keys.
#pragma once

#include "property.h"

#include "sarn/signature.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

namespace sarn_fuzz {

/// The part that the library passes to libcrypto: up to the first null character.
inline std::string toKeyText(const Input& input) {
    return input.toString().c_str();
}

/// The key that libcrypto reads from a PEM text, or null. The caller frees it.
template <class Read>
EVP_PKEY* readRaw(const std::string& text, Read read) {
    BIO* const source = BIO_new_mem_buf(text.data(), static_cast<int>(text.size()));
    EVP_PKEY* const key = read(source);
    BIO_free(source);
    ERR_clear_error();
    return key;
}

} // namespace sarn_fuzz
