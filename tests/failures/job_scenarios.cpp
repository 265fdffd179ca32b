// SPDX-License-Identifier: Apache-2.0
// Whole jobs of a backup host.
#include "failures/scenarios.h"
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"
#include "support/key_files.h"

#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"
#include "sarn/signature.h"
#include "sarn/signed_config.h"

#include "ul/file.h"

#include <stdexcept>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;

constexpr int contentSize = 5000;

/// What both jobs share: the password, the keys, and a folder.
struct Host {
    Host() {
        ul::TCryptBuffer<char> password;
        password.init("secret", 6);
        cache = ul::make<sarn::CPasswordKeyCache>(password);
    }

    TempFolder folder;
    ul::P<sarn::CPasswordKeyCache> cache;
    ul::String privateKey = readKey("rsa2048");
    ul::String publicKey = readPublicKey("rsa2048");
    Bytes content = makePattern(contentSize);
};

/// Encrypts the content into a text file, with a digest that is saved and resumed half way, and signs it.
Bytes backUp(const Host& host) {
    const ul::P<sarn::IDigest> first = createDigest("md4-sha1");
    feed(*first, Bytes(host.content.begin(), host.content.begin() + 2000));
    const ul::P<sarn::IDigest> second = createDigest("md4-sha1");
    loadState(*second, storeState(*first));
    // One that dies while it runs is finished then, and ends the process if that fails.
    first->finish();
    feed(*second, Bytes(host.content.begin() + 2000, host.content.end()));

    Buffer encrypted;
    const Bytes iv = makePattern(16);
    getAnyCipher("aes256cbc")
        ->encrypt(*host.cache->getKey(32, 1, 2), host.content.data(), contentSize, encrypted, false, iv.data());
    const ul::CWindowsPath file = host.folder.getPath("backup");
    ul::writeUTF8TextFile(file, sarn::base64Encode(encrypted.getData(), encrypted.getUsed(), true, true));
    Buffer signature;
    sarn::createFileSignature_RSA_SHA1(file, host.privateKey, signature);
    sarn::storeSignatureBase64(host.folder.getPath("backup.sig"), signature);
    return finish(*second);
}

/// Verifies and decrypts what backUp() wrote.
Bytes restore(const Host& host) {
    const ul::CWindowsPath file = host.folder.getPath("backup");
    if (!sarn::verifyFileSignature_RSA_SHA1(file, host.publicKey, host.folder.getPath("backup.sig")))
        throw ul::CError("not verified", "", -1, ul::CProps(), nullptr);
    Buffer encrypted;
    Buffer content;
    sarn::base64Decode(ul::readUTF8TextFile(file), encrypted);
    const Bytes iv = makePattern(16);
    getAnyCipher("aes256cbc")
        ->decrypt(*host.cache->getKey(32, 1, 2), encrypted.getData(), encrypted.getUsed(), content, false, iv.data());
    return toBytes(content);
}

Run runBackup() {
    const auto host = std::make_shared<Host>();
    return [=] { return backUp(*host); };
}

Run runRestore() {
    const auto host = std::make_shared<Host>();
    backUp(*host);
    return [=] { return restore(*host); };
}

/// A configuration of many values, read and looked through.
Run runLargeConfig() {
    const auto host = std::make_shared<Host>();
    std::string text;
    for (int i = 0; i < 60; ++i)
        text += "[section " + std::to_string(i) + "]\na name that is long enough=and a value that is long enough\n";
    const ul::CWindowsPath file = host->folder.write("config", text);
    Buffer signature;
    sarn::createFileSignature_RSA_SHA1(file, host->privateKey, signature);
    sarn::storeSignatureBase64(host->folder.getPath("config.sig"), signature);
    return [=] {
        const auto config = ul::make<sarn::CSignedConfig>(file, host->publicKey, false);
        ul::TArray<ul::String> names;
        config->getValueNamesWithPrefix(names, "/section 5");
        ul::String all;
        for (const ul::String& name : names)
            all += config->getValue(name);
        return toUTF8Bytes(all);
    };
}

} // namespace

Scenarios makeJobScenarios() {
    const std::vector<std::string> all = {"Error initializing OpenSSL digest.",
                                          "Error updating OpenSSL digest.",
                                          "Error finalizing OpenSSL digest.",
                                          "OpenSSL encrypt init error.",
                                          "OpenSSL encrypt error.",
                                          "OpenSSL decrypt error.",
                                          "Error deriving cryptographic key from password.",
                                          "Internal error: error during base64 encode.",
                                          "Internal error: error during base64 decode.",
                                          "invalid base64 data",
                                          "Random bytes are not available.",
                                          "OpenSSL sign init error.",
                                          "OpenSSL key corrupted.",
                                          "OpenSSL sign error.",
                                          "OpenSSL verify init error.",
                                          "OpenSSL verify update error.",
                                          "OpenSSL verify error."};
    return {{"WholeBackup_Sign", all, runBackup, {}, {}, true},
            {"WholeRestore_VerifySignature", all, runRestore, {}, "not verified"},
            {"LargeSignedConfig", all, runLargeConfig, {}, "Invalid signature for config file."}};
}

} // namespace sarn_test
