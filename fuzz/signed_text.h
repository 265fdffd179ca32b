// SPDX-License-Identifier: Apache-2.0
// Signatures with the keys of the tests.
#pragma once

#include "property.h"
#include "support/key_files.h"

#include "sarn/signature.h"

namespace sarn_fuzz {

struct SigningKey {
    explicit SigningKey(const char* name)
        : privateKey(sarn_test::readKey(name)), publicKey(sarn_test::readPublicKey(name)) {}

    ul::String privateKey;
    ul::String publicKey;
};

inline const SigningKey& getRSAKey() {
    static const SigningKey key("rsa1024");
    return key;
}

inline const SigningKey& getDSAKey() {
    static const SigningKey key("dsa1024");
    return key;
}

inline Bytes sign(const SigningKey& key, const std::string& text) {
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(key.privateKey, "");
    signer->update(text.data(), static_cast<int>(text.size()));
    Buffer signature;
    signer->finish(signature);
    return toBytes(signature);
}

/// Whether bytes are a signature that verifies.
inline bool verify(const SigningKey& key, const std::string& text, const Bytes& signature) {
    const ul::P<sarn::IVerifier> verifier = sarn::createRSA_SHA1()->beginVerify(key.publicKey);
    verifier->update(text.data(), static_cast<int>(text.size()));
    try {
        return verifier->finish(signature.data(), static_cast<int>(signature.size()));
    } catch (const ul::CError&) {
        return false;
    }
}

} // namespace sarn_fuzz
