// SPDX-License-Identifier: Apache-2.0
// Texts of keys.
#pragma once

#include "property.h"

#include "sarn/base64.h"
#include "sarn/signature.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

namespace sarn_fuzz {

/// The part that the library passes to libcrypto: up to the first null character. An input that starts with the tag of
/// a sequence is DER, which a fuzzer can change where the Base64 of PEM would break.
inline std::string toKeyText(const Input& input, const std::string& label) {
    constexpr unsigned char sequence = 0x30;
    const Bytes bytes = input.toBytes();
    if (bytes.empty() || bytes[0] != sequence)
        return input.toString().c_str();
    const ul::String body = sarn::base64Encode(bytes.data(), input.getSize(), true, true);
    return "-----BEGIN " + label + "-----\n" + body.toLatin1() + "-----END " + label + "-----\n";
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
