// SPDX-License-Identifier: Apache-2.0
#include "failures/scenarios.h"
#include "failures/signed_file.h"

#include "sarn/encoding.h"

#include <map>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;

constexpr char configText[] = "[server]\naddress=backup.example\nport=443\n";

/// A key that was read before anything failed.
const ul::String& getKey(const std::string& name, const char* suffix) {
    static std::map<std::string, ul::String> keys;
    ul::String& key = keys[name + suffix];
    if (key.isEmpty())
        key = readKey(name, suffix);
    return key;
}

Buffer sign(const std::string& name, const char* passphrase = "") {
    const ul::P<sarn::ISigner> signer =
        sarn::createRSA_SHA1()->beginSign(getKey(name, "_for_tests_only.pem"), passphrase);
    signer->update("only copy", 9);
    Buffer signature;
    signer->finish(signature);
    return signature;
}

bool isSigned(const std::string& name, const char* text, const Buffer& signature) {
    const ul::P<sarn::IVerifier> verifier =
        sarn::createDSS_SHA1()->beginVerify(getKey(name, "_for_tests_only.pub.pem"));
    verifier->update(text, 9);
    return verifier->finish(signature);
}

Run runVerify(const std::string& name, const char* text) {
    return [=, signature = Buffer()]() mutable {
        if (signature.getUsed() == 0)
            signature = sign(name);
        return asBytes(isSigned(name, text, signature));
    };
}

const SignedFile& getFile() {
    static const SignedFile file(std::string(20000, 'x'));
    return file;
}

Bytes signFile() {
    Buffer signature;
    sarn::createFileSignature_RSA_SHA1(getFile().path, getFile().privateKey, signature);
    return toBytes(signature);
}

Bytes verifyChangedFile() {
    static const SignedFile file("signed");
    static const ul::CWindowsPath changed = file.folder.write("file", "other");
    return asBytes(file.verify());
}

Bytes readConfig(bool isBase64) {
    static const SignedFile files[] = {
        SignedFile(configText), SignedFile(sarn::base64Encode(configText, sizeof configText - 1, true, true).toUTF8())};
    return toUTF8Bytes(files[isBase64].readConfig(isBase64)->getValue("/server/address"));
}

/// The names under `prefix` and their values.
Bytes listValues(sarn::CSignedConfig& config, const char* prefix) {
    ul::TArray<ul::String> names;
    config.getValueNamesWithPrefix(names, prefix);
    ul::String text;
    for (const ul::String& name : names)
        text += name + "=" + config.getValue(name) + ";";
    return toUTF8Bytes(text);
}

Bytes useConfig() {
    static const ul::P<sarn::CSignedConfig> config = SignedFile(configText).readConfig(false);
    config->setValueNonPersistent("/server/name", "here");
    return listValues(*config, "/server");
}

std::string makeLargeConfig() {
    std::string text;
    for (int i = 0; i < 60; ++i)
        text += "[section " + std::to_string(i) + "]\na name that is long enough=and a value that is long enough\n";
    return text;
}

Bytes readLargeConfig() {
    static const SignedFile file(makeLargeConfig());
    return listValues(*file.readConfig(false), "/section 5");
}

} // namespace

Scenarios makeSignatureScenarios() {
    constexpr bool verifies = true;
    return {
        {"SignRSA", [] { return toBytes(sign("rsa1024")); }},
        {"SignRSAOfEncryptedKey", [] { return toBytes(sign("rsa2048_encrypted_traditional", testPassphrase)); }},
        {"SignRSAOfPKCS8Key", [] { return toBytes(sign("rsa2048_pkcs8")); }},
        {"SignRSAOf4096Bits", [] { return toBytes(sign("rsa4096")); }},
        // A signature of its own each time; it verifies.
        {"SignAndVerifyDSA", [] { return asBytes(isSigned("dsa1024", "only copy", sign("dsa1024"))); }, verifies},
        {"VerifySignatureRSA", runVerify("rsa1024", "only copy"), verifies},
        {"VerifySignatureDSA", runVerify("dsa1024", "only copy"), verifies},
        {"VerifySignatureRSAOf4096Bits", runVerify("rsa4096", "only copy"), verifies},
        {"VerifySignatureDSAOf2048Bits", runVerify("dsa2048", "only copy"), verifies},
        {"VerifySignatureRSAOfAnotherText", runVerify("rsa1024", "only c0py"), verifies},
        {"VerifySignatureDSAOfAnotherText", runVerify("dsa1024", "only c0py"), verifies},
        {"SignFile", signFile},
        {"VerifySignatureOfFile", [] { return asBytes(getFile().verify()); }, verifies},
        {"VerifySignatureOfChangedFile", verifyChangedFile, verifies},
        {"ReadSignedConfig", [] { return readConfig(false); }, verifies},
        {"ReadSignedConfigInBase64", [] { return readConfig(true); }, verifies},
        {"UseSignedConfig", useConfig},
        {"LargeSignedConfig", readLargeConfig, verifies},
    };
}

} // namespace sarn_test
