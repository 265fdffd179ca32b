// SPDX-License-Identifier: Apache-2.0
#include "support/cipher_test_data.h"
#include "system/exchange/bundle.h"

namespace sarn_test {

namespace {

constexpr int sizes[] = {0, 1, 7, 8, 9, 15, 16, 17, 31, 32, 33, 255, 1000, 4096};

std::string getName(const std::string& id, int size, const char* kind) {
    return "cipher/" + id + "/" + std::to_string(size) + "/" + kind;
}

} // namespace

void addCiphers(Bundle& bundle) {
    const Bytes iv = makePattern(16);
    for (const std::string& id : getCipherIDs()) {
        const ul::P<sarn::ICipher> cipher = getAnyCipher(id);
        for (const int size : sizes) {
            const Bytes text = makePattern(size);
            bundle.exact[getName(id, size, "padded")] = runCipher(*cipher, encrypting, text, iv.data());
            bundle.exact[getName(id, size, "unpadded")] = runCipher(*cipher, encryptingUnpadded, text, iv.data());
            bundle.random[getName(id, size, "random")] = runCipher(*cipher, encrypting, text, nullptr);
        }
    }
}

bool decrypts(const std::string& name, const Bytes& encrypted) {
    const std::size_t idEnd = name.find('/', 7);
    const Bytes text = makePattern(std::stoi(name.substr(idEnd + 1)));
    return runCipher(*getAnyCipher(name.substr(7, idEnd - 7)), decrypting, encrypted, nullptr) == text;
}

} // namespace sarn_test
