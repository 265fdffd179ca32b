// SPDX-License-Identifier: Apache-2.0
#include "support/cipher_test_data.h"
#include "system/exchange/bundle.h"

namespace sarn_test {

namespace {

constexpr int sizes[] = {0, 1, 7, 8, 9, 15, 16, 17, 31, 32, 33, 255, 1000, 4096};

std::string getName(const std::string& id, int size, const char* kind) {
    return "cipher/" + id + "/" + std::to_string(size) + "/" + kind;
}

/// What an operation of the cipher called `id` makes of `input`.
Bytes apply(const std::string& id, decltype(&sarn::ICipher::encrypt) operation, const Bytes& input,
            const unsigned char* iv) {
    const ul::P<sarn::ICipher> cipher = getAnyCipher(id);
    ul::TBuffer<unsigned char> out;
    (cipher.get()->*operation)(TestKey(cipher->getKeySize()), input.data(), static_cast<int>(input.size()), out, false,
                               iv);
    return toBytes(out);
}

} // namespace

void addCiphers(Bundle& bundle) {
    std::vector<std::string> ids = {"aes256cbc", "aes128cbc", "bfcbc", "cast128cbc", "null"};
    if (hasIDEA)
        ids.emplace_back("ideacbc");
    const Bytes iv = makePattern(16);
    for (const std::string& id : ids) {
        for (const int size : sizes) {
            const Bytes text = makePattern(size);
            bundle.exact[getName(id, size, "padded")] = apply(id, &sarn::ICipher::encrypt, text, iv.data());
            bundle.exact[getName(id, size, "unpadded")] =
                apply(id, &sarn::ICipher::encryptWithoutPadding, text, iv.data());
            bundle.random[getName(id, size, "random")] = apply(id, &sarn::ICipher::encrypt, text, nullptr);
        }
    }
}

bool decrypts(const std::string& name, const Bytes& encrypted) {
    const std::size_t idEnd = name.find('/', 7);
    const Bytes text = makePattern(std::stoi(name.substr(idEnd + 1)));
    return apply(name.substr(7, idEnd - 7), &sarn::ICipher::decrypt, encrypted, nullptr) == text;
}

} // namespace sarn_test
