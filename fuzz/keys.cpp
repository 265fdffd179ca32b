// SPDX-License-Identifier: Apache-2.0
// The texts of keys.
#include "property.h"
#include "targets.h"

#include "sarn/base64.h"
#include "sarn/signature.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

namespace sarn_fuzz {

namespace {

/// The part that the library passes to libcrypto: up to the first null character. An input that starts with the tag of
/// a sequence is DER, which a fuzzer can change where the Base64 of PEM would break.
std::string toKeyText(const Input& input, const std::string& label) {
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

} // namespace

// A text is accepted as a private key if and only if libcrypto reads it and can sign with it.
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

// A text is accepted as a public key only if libcrypto reads it, and only right signatures verify.
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
