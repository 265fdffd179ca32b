// SPDX-License-Identifier: Apache-2.0
#include "failures/scenarios.h"
#include "failures/signed_file.h"

namespace sarn_test {

namespace {

constexpr char configText[] = "[server]\naddress=backup.example\nport=443\n";

/// The text of a key file, read once.
const ul::String& getKey(const std::string& name, const char* suffix) {
    static std::map<std::string, ul::String> keys;
    ul::String& key = keys[name + suffix];
    if (key.isEmpty())
        key = readKey(name, suffix);
    return key;
}

Bytes sign(const std::string& name, const char* passphrase = "") {
    return sarn_test::sign(sarn::createRSA_SHA1(), getKey(name, "_for_tests_only.pem"), toBytes("only copy"),
                           passphrase);
}

bool isSigned(const std::string& name, const char* text, const Bytes& signature) {
    return verify(sarn::createDSS_SHA1(), getKey(name, "_for_tests_only.pub.pem"), toBytes(text), signature);
}

Run runVerify(const std::string& name, const char* text) {
    return [=, signature = Bytes()]() mutable {
        if (signature.empty())
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
    static const SignedFile files[] = {SignedFile(configText), SignedFile(toBase64(configText))};
    return toUTF8Bytes(files[isBase64].readConfig(isBase64)->getValue("/server/address"));
}

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
        {"SignRSA", [] { return sign("rsa1024"); }},
        {"SignRSAOfEncryptedKey", [] { return sign("rsa2048_encrypted_traditional", testPassphrase); }},
        {"SignRSAOfPKCS8Key", [] { return sign("rsa2048_pkcs8"); }},
        {"SignRSAOf4096Bits", [] { return sign("rsa4096"); }},
        // DSA signatures differ each time.
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
