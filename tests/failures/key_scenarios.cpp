// SPDX-License-Identifier: Apache-2.0
#include "failures/scenarios.h"
#include "support/cipher_test_data.h"

#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"

#include "ul/random.h"

namespace sarn_test {

namespace {

const Bytes data = makePattern(3000);

Bytes authenticate() {
    Buffer out;
    sarn::calcHMAC_SHA1(out, "data", 4, "key", 3);
    return toBytes(out);
}

Bytes derive() {
    Bytes key(32);
    sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("secret", 6, "saltsalt", 8, 3, 32, key.data());
    return key;
}

ul::P<sarn::CPasswordKeyCache> makeCache() {
    ul::TCryptBuffer<char> password;
    password.init("secret", 6);
    return ul::make<sarn::CPasswordKeyCache>(password);
}

Bytes useSharedCache() {
    static const ul::P<sarn::CPasswordKeyCache> cache = makeCache();
    return toBytes(*cache->getKey(32, 1, 3));
}

Bytes encode(bool lineBreaks) {
    return toUTF8Bytes(sarn::base64Encode(data.data(), 3000, true, lineBreaks));
}

Bytes decode(bool lineBreaks) {
    static const ul::String texts[] = {sarn::base64Encode(data.data(), 3000, true, false),
                                       sarn::base64Encode(data.data(), 3000, true, true)};
    Buffer out;
    sarn::base64Decode(texts[lineBreaks], out);
    return toBytes(out);
}

Bytes encodeBuffer() {
    Buffer buffer;
    fill(buffer, data);
    sarn::base64EncodeBufferWithCRLF(buffer);
    return toBytes(buffer);
}

/// Draws random bytes by a small and by a large request. The result is always the same.
Bytes drawRandomBytes() {
    const ul::P<ul::CMTRand> generator = ul::make<ul::CMTRand>();
    Bytes bytes(2000);
    generator->randData(bytes.data(), 16);
    generator->randData(bytes.data() + 16, 1984);
    return Bytes(1, 1);
}

Bytes registerCipher() {
    static const ul::P<sarn::CCipherManager> manager = ul::make<sarn::CCipherManager>();
    manager->addCipher(ul::make<sarn::CCipher_Null>().get());
    return toUTF8Bytes(manager->getCipher("null")->getID());
}

} // namespace

Scenarios makeKeyScenarios() {
    return {
        {"HMAC", authenticate},
        {"DeriveKey", derive},
        {"CacheOfItsOwn", [] { return toBytes(*makeCache()->getKey(32, 1, 3)); }},
        {"SharedCache", useSharedCache},
        {"Base64Encode", [] { return encode(false); }},
        {"Base64EncodeLines", [] { return encode(true); }},
        {"Base64Decode", [] { return decode(false); }},
        {"Base64DecodeLines", [] { return decode(true); }},
        {"Base64EncodeBuffer", encodeBuffer},
        {"RandomBytes", drawRandomBytes},
        {"FindCipher", [] { return toUTF8Bytes(getAnyCipher("aes256cbc")->getID()); }},
        {"RegisterCipher", registerCipher},
        {"CreateRegistry", [] { return toUTF8Bytes(ul::make<sarn::CCipherManager>()->getCipher("bfcbc")->getID()); }},
    };
}

} // namespace sarn_test
