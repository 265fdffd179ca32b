// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/expect.h"
#include "support/key_files.h"
#include "support/temp_folder.h"

#include "sarn/base64.h"
#include "sarn/signature.h"

namespace sarn_test {

inline Bytes sign(const ul::P<sarn::ISignatureAlgo>& algo, const ul::String& key, const Bytes& data,
                  const ul::String& passphrase = "") {
    const ul::P<sarn::ISigner> signer = algo->beginSign(key, passphrase);
    signer->update(data.data(), static_cast<int>(data.size()));
    Buffer signature;
    signer->finish(signature);
    return toBytes(signature);
}

inline bool verify(const ul::P<sarn::ISignatureAlgo>& algo, const ul::String& key, const Bytes& data,
                   const Bytes& signature) {
    const ul::P<sarn::IVerifier> verifier = algo->beginVerify(key);
    verifier->update(data.data(), static_cast<int>(data.size()));
    return verifier->finish(signature.data(), static_cast<int>(signature.size()));
}

inline void expectRefusedAsPublicKey(const ul::String& text) {
    expectError("OpenSSL key corrupted.", [&] { sarn::createRSA_SHA1()->beginVerify(text); });
}

inline void expectRefusedAsPrivateKey(const ul::String& text, const ul::String& passphrase = testPassphrase) {
    expectError("OpenSSL key corrupted.", [&] { sarn::createRSA_SHA1()->beginSign(text, passphrase); });
}

inline std::string toBase64(const std::string& text, bool lineBreaks = true) {
    return sarn::base64Encode(text.data(), static_cast<int>(text.size()), true, lineBreaks).toLatin1();
}

inline ul::String toPem(const std::string& label, const Bytes& der) {
    return ("-----BEGIN " + label + "-----\n" + toBase64(toText(der)) + "-----END " + label + "-----\n").c_str();
}

/// Signs a file and writes its signature file.
inline void writeSignatureFile(const ul::CWindowsPath& path, const std::string& key = "rsa2048") {
    Buffer signature;
    sarn::createFileSignature_RSA_SHA1(path, readKey(key), signature);
    sarn::storeSignatureBase64(ul::CWindowsPath(path.getString() + ".sig"), signature);
}

} // namespace sarn_test
