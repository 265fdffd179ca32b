// SPDX-License-Identifier: Apache-2.0
#include "failures/scenarios.h"
#include "support/cipher_test_data.h"

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;
using Key = ul::TCryptBuffer<unsigned char>;
using Operation = void (sarn::ICipher::*)(const Key&, const void*, int, Buffer&, bool, const unsigned char*);

constexpr int textSize = 100;
constexpr int wholeBlocks = 96;

/// What a cipher is used with.
struct Setting {
    explicit Setting(const std::string& id) : cipher(getAnyCipher(id)), key(cipher->getKeySize()) {}

    ul::P<sarn::ICipher> cipher;
    TestKey key;
    Bytes iv = makePattern(16);
    Bytes text = makePattern(textSize);
    Buffer out;
};

Run runOperation(const std::string& id, Operation operation, int size, bool append) {
    const auto setting = std::make_shared<Setting>(id);
    return [=] {
        fill(setting->out, makePattern(append ? 5 : 0));
        (setting->cipher.get()->*operation)(setting->key, setting->text.data(), size, setting->out, append,
                                            setting->iv.data());
        return toBytes(setting->out);
    };
}

/// Under an IV that the cipher draws; what is decrypted is the same each time.
Run runRoundTrip(const std::string& id) {
    const auto setting = std::make_shared<Setting>(id);
    return [=] {
        setting->cipher->encrypt(setting->key, setting->text.data(), textSize, setting->out, false, nullptr);
        Buffer decrypted;
        setting->cipher->decrypt(setting->key, setting->out.getData(), setting->out.getUsed(), decrypted, false,
                                 nullptr);
        return toBytes(decrypted);
    };
}

Run runDecrypt(const std::string& id, bool append) {
    const auto setting = std::make_shared<Setting>(id);
    const auto encrypted = std::make_shared<Buffer>();
    setting->cipher->encrypt(setting->key, setting->text.data(), textSize, *encrypted, false, setting->iv.data());
    return [=] {
        fill(setting->out, makePattern(append ? 5 : 0));
        setting->cipher->decrypt(setting->key, encrypted->getData(), encrypted->getUsed(), setting->out, append,
                                 setting->iv.data());
        return toBytes(setting->out);
    };
}

} // namespace

Scenarios makeCipherScenarios() {
    const std::vector<std::string> encryptErrors = {"OpenSSL encrypt init error.", "OpenSSL encrypt error.",
                                                    "OpenSSL encrypt error: output size does not match expected value",
                                                    "Random bytes are not available."};
    std::vector<std::string> errors = encryptErrors;
    errors.insert(errors.end(),
                  {"OpenSSL decrypt error.", "OpenSSL decrypt error: decrypted size does not match expected value"});
    Scenarios scenarios;
    std::vector<std::string> ids = {"null"};
    for (const CipherSizes& sizes : getRegisteredCiphers())
        ids.push_back(sizes.id);
    if (hasIDEA)
        ids.push_back("ideacbc");
    for (const std::string& id : ids) {
        const auto add = [&](const std::string& name, const std::function<Run()>& prepare) {
            scenarios.push_back({name + "_" + id, errors, prepare});
        };
        using sarn::ICipher;
        add("Encrypt", [=] { return runOperation(id, &ICipher::encrypt, textSize, false); });
        add("EncryptAppended", [=] { return runOperation(id, &ICipher::encrypt, textSize, true); });
        add("EncryptUnpadded", [=] { return runOperation(id, &ICipher::encryptWithoutPadding, textSize, true); });
        add("DecryptUnpadded", [=] { return runOperation(id, &ICipher::decryptWithoutPadding, wholeBlocks, false); });
        add("Decrypt", [=] { return runDecrypt(id, false); });
        add("DecryptAppended", [=] { return runDecrypt(id, true); });
        add("RoundTrip", [=] { return runRoundTrip(id); });
    }
    return scenarios;
}

} // namespace sarn_test
