// SPDX-License-Identifier: Apache-2.0
// The ciphers that an input selects, and the same operations by raw calls of libcrypto.
#pragma once

#include "property.h"

#include "sarn/cipher.h"

#include <openssl/evp.h>

namespace sarn_fuzz {

struct ChosenCipher {
    ul::P<sarn::ICipher> cipher;
    const EVP_CIPHER* raw;
};

/// AES, which every libcrypto has. Padding and sizes do not depend on the cipher.
inline ChosenCipher chooseCipher(unsigned choice) {
    const bool isLong = choice % 2 == 0;
    return {sarn::CCipherManager::get()->getCipher(isLong ? "aes256cbc" : "aes128cbc"),
            isLong ? EVP_aes_256_cbc() : EVP_aes_128_cbc()};
}

/// libcrypto's result, or none if it fails.
inline std::optional<Bytes> runRaw(const EVP_CIPHER* cipher, bool encrypts, bool isPadded, const Key& key,
                                   const Bytes& iv, const Bytes& input) {
    EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
    Bytes out(input.size() + 32);
    int written = 0;
    int last = 0;
    const bool isDone = EVP_CipherInit_ex(context, cipher, nullptr, key.getData(), iv.data(), encrypts) &&
                        EVP_CIPHER_CTX_set_padding(context, isPadded) &&
                        EVP_CipherUpdate(context, out.data(), &written, input.data(), static_cast<int>(input.size())) &&
                        EVP_CipherFinal_ex(context, out.data() + written, &last);
    EVP_CIPHER_CTX_free(context);
    if (!isDone)
        return std::nullopt;
    out.resize(static_cast<std::size_t>(written + last));
    return out;
}

} // namespace sarn_fuzz
