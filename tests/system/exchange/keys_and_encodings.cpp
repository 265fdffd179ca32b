// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "system/exchange/bundle.h"

#include "sarn/encoding.h"

namespace sarn_test {

namespace {

std::string getName(const char* kind, int size, const char* form) {
    return std::string(kind) + "/" + std::to_string(size) + "/" + form;
}

Bytes encode(const Bytes& data, bool keepPadding, bool lineBreaks) {
    return toUTF8Bytes(sarn::base64Encode(data.data(), static_cast<int>(data.size()), keepPadding, lineBreaks));
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
    for (const int size : {0, 1, 2, 3, 47, 48, 49, 96, 1000, 4096}) {
        const Bytes data = makePattern(size);
        bundle.exact[getName("base64", size, "padding")] = encode(data, true, false);
        bundle.exact[getName("base64", size, "no-padding")] = encode(data, false, false);
        bundle.exact[getName("base64", size, "lines")] = encode(data, false, true);
        bundle.exact[getName("hmac", size, "sha1")] = getHMAC(data);
    }
    for (const int size : {16, 32, 100})
        bundle.exact[getName("key", size, "pbkdf2")] = deriveKey(size);
}

} // namespace sarn_test
