// SPDX-License-Identifier: Apache-2.0
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"
#include "support/password_keys.h"
#include "support/signing.h"
#include "system/exchange/bundle.h"

#include "sarn/signed_config.h"

namespace sarn_test {

namespace {

constexpr int cipherSizes[] = {0, 1, 7, 8, 9, 15, 16, 17, 31, 32, 33, 255, 1000, 4096};

// Sizes around the blocks of the hashes and around the longest run of Adler-32 without a division.
constexpr int offsets[] = {0, 1, 55, 56, 63, 64, 65, 127, 128, 1000, 5551, 5552, 5553};

std::string getName(const std::string& kind, int size, const char* form) {
    return kind + "/" + std::to_string(size) + "/" + form;
}

Bytes encode(const Bytes& data, bool keepPadding, bool lineBreaks) {
    return toUTF8Bytes(sarn::base64Encode(data.data(), static_cast<int>(data.size()), keepPadding, lineBreaks));
}

Bytes getHMAC(const Bytes& data) {
    ul::TBuffer<unsigned char> out;
    sarn::calcHMAC_SHA1(out, data.data(), static_cast<int>(data.size()), "key", 3);
    return toBytes(out);
}

constexpr const char* keys[] = {"rsa1024", "rsa2048", "rsa3072", "rsa4096", "dsa1024", "dsa2048"};
constexpr int sizes[] = {0, 1, 8191, 8192, 8193, 16384, 100000};
constexpr char config[] = "top=0\n[backup]\nfolder=\xC3\xBC\nkeep/days=30\n";

const std::pair<const char*, bool> configForms[] = {{"plain.ini", false}, {"base64.ini", true}};

ul::CWindowsPath getPath(const std::string& folder, const std::string& name) {
    return TempFolder::toPath(std::filesystem::absolute(std::filesystem::u8path(folder + "/" + name)));
}

void write(const std::string& folder, const std::string& name, const std::string& content) {
    std::ofstream(folder + "/" + name, std::ios::binary)
        .write(content.data(), static_cast<std::streamsize>(content.size()));
}

void sign(const std::string& folder, const std::string& file, const std::string& key,
          const std::string& signatureFile) {
    ul::TBuffer<unsigned char> signature;
    sarn::createFileSignature_RSA_SHA1(getPath(folder, file), readKey(key), signature);
    sarn::storeSignatureBase64(getPath(folder, signatureFile), signature);
}

} // namespace

void addCiphers(Bundle& bundle) {
    const Bytes iv = makePattern(16);
    for (const std::string& id : getCipherIDs()) {
        const ul::P<sarn::ICipher> cipher = getAnyCipher(id);
        for (const int size : cipherSizes) {
            const Bytes text = makePattern(size);
            bundle.exact[getName("cipher/" + id, size, "padded")] = runCipher(*cipher, encrypting, text, iv.data());
            bundle.exact[getName("cipher/" + id, size, "unpadded")] =
                runCipher(*cipher, encryptingUnpadded, text, iv.data());
            bundle.random[getName("cipher/" + id, size, "random")] = runCipher(*cipher, encrypting, text, nullptr);
        }
    }
}

bool decrypts(const std::string& name, const Bytes& encrypted) {
    const std::size_t idEnd = name.find('/', 7);
    const Bytes text = makePattern(std::stoi(name.substr(idEnd + 1)));
    return runCipher(*getAnyCipher(name.substr(7, idEnd - 7)), decrypting, encrypted, nullptr) == text;
}

void addDigestStates(Bundle& bundle) {
    const Bytes data = makePattern(6000);
    for (const char* const id : digestIDs) {
        for (const int offset : offsets) {
            const Bytes front = cut(data, offset);
            const ul::P<sarn::IDigest> digest = createDigest(id, front);
            const auto add = [&](const char* kind) {
                bundle.exact[getName(std::string("digest/") + id, offset, kind)] = storeState(*digest);
            };
            add("running");
            digest->finish();
            add("finished");
            digest->getDigestData();
            add("read");
            digest->reset();
            feed(*digest, front);
            add("reset");
        }
    }
}

void addKeysAndEncodings(Bundle& bundle) {
    for (const int size : {0, 1, 2, 3, 47, 48, 49, 96, 1000, 4096}) {
        const Bytes data = makePattern(size);
        bundle.exact[getName("base64", size, "padding")] = encode(data, true, false);
        bundle.exact[getName("base64", size, "no-padding")] = encode(data, false, false);
        bundle.exact[getName("base64", size, "lines")] = encode(data, false, true);
        bundle.exact[getName("hmac", size, "sha1")] = getHMAC(data);
    }
    for (const int size : {16, 32, 100})
        bundle.exact[getName("key", size, "pbkdf2")] = deriveKey("password", "salt", 1000, size);
}

void writeSignedFiles(const std::string& folder) {
    for (const int size : sizes) {
        const std::string name = "data" + std::to_string(size);
        write(folder, name, makeText(size));
        for (const char* const key : keys)
            sign(folder, name, key, name + "." + key + ".sig");
    }
    for (const auto& [name, isBase64] : configForms) {
        write(folder, name, isBase64 ? toBase64(config) : config);
        sign(folder, name, "rsa2048", std::string(name) + ".sig");
    }
}

int checkSignedFiles(const std::string& folder) {
    for (const int size : sizes) {
        const std::string name = "data" + std::to_string(size);
        for (const char* const key : keys) {
            const std::string signatureName = name + "." + key + ".sig";
            require(sarn::verifyFileSignature_RSA_SHA1(getPath(folder, name), readPublicKey(key),
                                                       getPath(folder, signatureName)),
                    signatureName);
        }
        require(!sarn::verifyFileSignature_RSA_SHA1(getPath(folder, name), readPublicKey("rsa2048"),
                                                    getPath(folder, name + ".rsa1024.sig")),
                name + " with the signature of another key");
    }
    for (const auto& [name, isBase64] : configForms) {
        sarn::CSignedConfig content(getPath(folder, name), readPublicKey("rsa2048"), isBase64);
        require(content.getValue("backup/folder").toUTF8() == "\xC3\xBC", name);
        require(content.getValue("backup/keep/days") == "30", name);
        require(content.getValue("top") == "0", name);
    }
    return static_cast<int>(std::size(sizes) * std::size(keys) + std::size(configForms));
}

} // namespace sarn_test
