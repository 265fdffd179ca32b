// SPDX-License-Identifier: Apache-2.0
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"
#include "support/password_keys.h"
#include "system/exchange/bundle.h"

#include "sarn/encoding.h"

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

} // namespace sarn_test
