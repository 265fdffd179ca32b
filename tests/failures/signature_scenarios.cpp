// SPDX-License-Identifier: Apache-2.0
#include "failures/scenarios.h"
#include "support/expect.h"
#include "support/key_files.h"

#include "sarn/encoding.h"
#include "sarn/signature.h"
#include "sarn/signed_config.h"

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;

constexpr char configText[] = "[server]\naddress=backup.example\nport=443\n";

Buffer signText(const ul::String& key, const ul::String& passphrase) {
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(key, passphrase);
    signer->update("only copy", 9);
    Buffer signature;
    signer->finish(signature);
    return signature;
}

Run runSign(const std::string& name, const ul::String& passphrase) {
    const ul::String key = readKey(name);
    return [=] { return toBytes(signText(key, passphrase)); };
}

/// A signature of its own each time; it verifies.
Run runSignDSA() {
    const ul::String key = readKey("dsa1024");
    const ul::String publicKey = readPublicKey("dsa1024");
    return [=] {
        const Buffer signature = signText(key, "");
        const ul::P<sarn::IVerifier> verifier = sarn::createDSS_SHA1()->beginVerify(publicKey);
        verifier->update("only copy", 9);
        return Bytes(1, verifier->finish(signature));
    };
}

Run runVerify(const std::string& name, const char* text) {
    const Buffer signature = signText(readKey(name), "");
    const ul::String key = readPublicKey(name);
    return [=] {
        const ul::P<sarn::IVerifier> verifier = sarn::createRSA_SHA1()->beginVerify(key);
        verifier->update(text, 9);
        return Bytes(1, verifier->finish(signature));
    };
}

/// A folder with a file, its signature beside it and the keys.
struct Signed {
    explicit Signed(const std::string& content)
        : file(folder.write("file", content)), signaturePath(folder.getPath("file.sig")) {
        sarn::createFileSignature_RSA_SHA1(file, key, signature);
        sarn::storeSignatureBase64(signaturePath, signature);
    }

    TempFolder folder;
    ul::String key = readKey("rsa1024");
    ul::String publicKey = readPublicKey("rsa1024");
    ul::CWindowsPath file;
    ul::CWindowsPath signaturePath;
    Buffer signature;
};

Run runSignFile() {
    const auto setting = std::make_shared<Signed>(std::string(20000, 'x'));
    return [=] {
        Buffer signature;
        sarn::createFileSignature_RSA_SHA1(setting->file, setting->key, signature);
        return toBytes(signature);
    };
}

Run runVerifyFile(bool isIntact) {
    const auto setting = std::make_shared<Signed>(std::string(20000, 'x'));
    if (!isIntact)
        setting->folder.write("file", std::string(19999, 'x') + "y");
    return [=] {
        return Bytes(1, sarn::verifyFileSignature_RSA_SHA1(setting->file, setting->publicKey, setting->signaturePath));
    };
}

Run runReadConfig(bool isBase64) {
    const std::string encoded = sarn::base64Encode(configText, sizeof configText - 1, true, true).toUTF8();
    const auto setting = std::make_shared<Signed>(isBase64 ? encoded : configText);
    return [=] {
        const auto config = ul::make<sarn::CSignedConfig>(setting->file, setting->publicKey, isBase64);
        return toUTF8Bytes(config->getValue("/server/address"));
    };
}

Run runUseConfig() {
    const auto setting = std::make_shared<Signed>(configText);
    const auto config = ul::make<sarn::CSignedConfig>(setting->file, setting->publicKey, false);
    return [=] {
        config->setValueNonPersistent("/server/name", "here");
        ul::TArray<ul::String> names;
        config->getValueNamesWithPrefix(names, "/server");
        std::string text;
        for (const ul::String& name : names)
            text += name.toUTF8() + "=" + config->getValue(name).toUTF8() + ";";
        return toBytes(text);
    };
}

} // namespace

Scenarios makeSignatureScenarios() {
    const std::vector<std::string> sign = {"OpenSSL sign init error.", "OpenSSL key corrupted.", "OpenSSL sign error."};
    const std::vector<std::string> verify = {"OpenSSL verify init error.",
                                             "OpenSSL key corrupted.",
                                             "OpenSSL verify update error.",
                                             "OpenSSL verify error.",
                                             "Internal error: error during base64 decode.",
                                             "invalid base64 data"};
    const Bytes mismatch(1, 0);
    const std::string invalid = "Invalid signature for config file.";
    std::vector<std::string> both = verify;
    both.insert(both.end(), sign.begin(), sign.end());
    return {
        {"SignRSA", sign, [] { return runSign("rsa1024", ""); }},
        {"SignRSAOfEncryptedKey", sign, [] { return runSign("rsa2048_encrypted_traditional", testPassphrase); }},
        {"SignRSAOfPKCS8Key", sign, [] { return runSign("rsa2048_pkcs8", ""); }},
        {"SignRSAOf3072Bits", sign, [] { return runSign("rsa3072", ""); }},
        {"SignAndVerifyDSA", both, runSignDSA, mismatch},
        {"VerifySignatureRSA", verify, [] { return runVerify("rsa1024", "only copy"); }, mismatch},
        {"VerifySignatureDSA", verify, [] { return runVerify("dsa1024", "only copy"); }, mismatch},
        {"VerifySignatureRSAOf4096Bits", verify, [] { return runVerify("rsa4096", "only copy"); }, mismatch},
        {"VerifySignatureDSAOf2048Bits", verify, [] { return runVerify("dsa2048", "only copy"); }, mismatch},
        {"VerifySignatureRSAOfAnotherText", verify, [] { return runVerify("rsa1024", "only c0py"); }, mismatch},
        {"VerifySignatureDSAOfAnotherText", verify, [] { return runVerify("dsa1024", "only c0py"); }, mismatch},
        {"SignFile", sign, runSignFile},
        {"VerifySignatureOfFile", verify, [] { return runVerifyFile(true); }, mismatch},
        {"VerifySignatureOfChangedFile", verify, [] { return runVerifyFile(false); }, mismatch},
        {"ReadSignedConfig", verify, [] { return runReadConfig(false); }, {}, invalid},
        {"ReadSignedConfigInBase64", verify, [] { return runReadConfig(true); }, {}, invalid},
        {"UseSignedConfig", {}, runUseConfig},
    };
}

} // namespace sarn_test
