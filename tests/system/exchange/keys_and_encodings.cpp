// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "system/exchange/bundle.h"

#include "sarn/encoding.h"

#include <iterator>

namespace sarn_test {

namespace {

constexpr int sizes[] = {0, 1, 2, 3, 47, 48, 49, 96, 1000, 4096};
constexpr const char* forms[] = {"padding", "no-padding", "lines"};
constexpr int keySizes[] = {16, 32, 100};

std::string getName(const char* kind, int size, const char* form) {
    return std::string(kind) + "/" + std::to_string(size) + "/" + form;
}

Bytes encode(const Bytes& data, const std::string& form) {
    return toBytes(
        sarn::base64Encode(data.data(), static_cast<int>(data.size()), form == "padding", form == "lines").toLatin1());
}

Bytes deriveKey(int size) {
    Bytes key(static_cast<std::size_t>(size));
    sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("password", 8, "salt", 4, 1000, size, key.data());
    return key;
}

Bytes getHMAC(const Bytes& data) {
    ul::TBuffer<unsigned char> out;
    sarn::calcHMAC_SHA1(out, data.data(), static_cast<int>(data.size()), "key", 3);
    return toBytes(out);
}

} // namespace

void addKeysAndEncodings(Bundle& bundle) {
    for (const int size : sizes) {
        const Bytes data = makePattern(size);
        for (const char* const form : forms)
            bundle.exact[getName("base64", size, form)] = encode(data, form);
        bundle.exact[getName("hmac", size, "sha1")] = getHMAC(data);
    }
    for (const int size : keySizes)
        bundle.exact[getName("key", size, "pbkdf2")] = deriveKey(size);
}

int checkKeysAndEncodings(const Bundle& bundle) {
    for (const int size : sizes) {
        const Bytes data = makePattern(size);
        for (const char* const form : forms) {
            const std::string name = getName("base64", size, form);
            const Bytes& text = getItem(bundle.exact, name);
            ul::TBuffer<unsigned char> out;
            sarn::base64Decode(ul::String(reinterpret_cast<const char*>(text.data()), text.size()), out);
            require(toBytes(out) == data, name);
        }
        const std::string name = getName("hmac", size, "sha1");
        require(getItem(bundle.exact, name) == getHMAC(data), name);
    }
    for (const int size : keySizes) {
        const std::string name = getName("key", size, "pbkdf2");
        require(getItem(bundle.exact, name) == deriveKey(size), name);
    }
    return static_cast<int>(std::size(sizes) * (std::size(forms) + 1) + std::size(keySizes));
}

} // namespace sarn_test
