// SPDX-License-Identifier: Apache-2.0
// A text is accepted as a public key only if libcrypto reads it, and only right signatures verify.
#include "keys.h"
#include "targets.h"

namespace sarn_fuzz {

void fuzzPublicKey(const std::uint8_t* data, std::size_t size) {
    const std::string text = toKeyText(Input(data, size), "PUBLIC KEY");
    // With an empty passphrase, like the library: without one libcrypto would ask for it.
    EVP_PKEY* const key =
        readRaw(text, [](BIO* source) { return PEM_read_bio_PUBKEY(source, nullptr, nullptr, const_cast<char*>("")); });
    try {
        const ul::P<sarn::IVerifier> verifier =
            sarn::createRSA_SHA1()->beginVerify(ul::String(text.data(), text.size()));
        require(key != nullptr, "libcrypto takes what the library takes");
        verifier->update("text", 4);
        const Bytes forged = sarn_test::makePattern(EVP_PKEY_size(key));
        require(!verifier->finish(forged.data(), static_cast<int>(forged.size())),
                "what nobody signed does not verify");
    } catch (const ul::CError&) {
        // Refused, or of a kind that cannot verify.
    }
    EVP_PKEY_free(key);
}

} // namespace sarn_fuzz
