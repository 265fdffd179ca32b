// SPDX-License-Identifier: Apache-2.0
// A text is accepted as a private key if and only if libcrypto reads it and can sign with it.
#include "keys.h"
#include "targets.h"

namespace sarn_fuzz {

void fuzzPrivateKey(const std::uint8_t* data, std::size_t size) {
    const std::string text = toKeyText(Input(data, size), "PRIVATE KEY");
    EVP_PKEY* const key = readRaw(
        text, [](BIO* source) { return PEM_read_bio_PrivateKey(source, nullptr, nullptr, const_cast<char*>("")); });
    try {
        const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(ul::String(text.data(), text.size()), "");
        require(key != nullptr, "libcrypto takes what the library takes");
        signer->update("text", 4);
        signer->getMaxSignatureSize();
    } catch (const ul::CError&) {
        // Refused, or of a kind that cannot sign.
    }
    EVP_PKEY_free(key);
}

} // namespace sarn_fuzz
