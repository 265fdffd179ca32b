// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/signing.h"

#include "sarn/signed_config.h"

namespace sarn_test {

/// A file called "file", its signature file in the same folder, and the keys.
struct SignedFile {
    explicit SignedFile(const std::string& content) : path(folder.write("file", content)) {
        sarn::createFileSignature_RSA_SHA1(path, privateKey, signature);
        sarn::storeSignatureBase64(signaturePath, signature);
    }

    bool verify() const { return sarn::verifyFileSignature_RSA_SHA1(path, publicKey, signaturePath); }
    ul::P<sarn::CSignedConfig> readConfig(bool isBase64) const {
        return ul::make<sarn::CSignedConfig>(path, publicKey, isBase64);
    }

    const TempFolder folder;
    const ul::String privateKey = readKey("rsa1024");
    const ul::String publicKey = readPublicKey("rsa1024");
    const ul::CWindowsPath path;
    const ul::CWindowsPath signaturePath = folder.getPath("file.sig");
    ul::TBuffer<unsigned char> signature;
};

} // namespace sarn_test
