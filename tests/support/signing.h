// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/expect.h"
#include "support/key_files.h"

#include "sarn/signature.h"

#include <string>

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

/// Signs a file and writes its signature file.
inline void writeSignatureFile(const ul::CWindowsPath& path, const std::string& key = "rsa2048") {
    Buffer signature;
    sarn::createFileSignature_RSA_SHA1(path, readKey(key), signature);
    sarn::storeSignatureBase64(ul::CWindowsPath(path.getString() + ".sig"), signature);
}

} // namespace sarn_test
