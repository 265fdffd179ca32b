// SPDX-License-Identifier: Apache-2.0
#include "failures/scenarios.h"
#include "support/cipher_test_data.h"

#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"

#include "ul/random.h"

#include <openssl/evp.h>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;

ul::P<sarn::CPasswordKeyCache> makeCache() {
    ul::TCryptBuffer<char> password;
    password.init("secret", 6);
    return ul::make<sarn::CPasswordKeyCache>(password);
}

Run runHMAC() {
    return [] {
        Buffer out;
        sarn::calcHMAC(out, EVP_sha1(), "data", 4, "key", 3);
        return toBytes(out);
    };
}

Run runDeriveKey() {
    return [] {
        Bytes key(32);
        sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("secret", 6, "saltsalt", 8, 3, 32, key.data());
        return key;
    };
}

Run runCache(const ul::P<sarn::CPasswordKeyCache>& shared) {
    return [shared] {
        const ul::P<sarn::CPasswordKeyCache> cache = shared ? shared : makeCache();
        return toBytes(*cache->getKey(32, 1, 3));
    };
}

Run runEncode(bool lineBreaks) {
    return [lineBreaks] { return toUTF8Bytes(sarn::base64Encode(makePattern(3000).data(), 3000, true, lineBreaks)); };
}

Run runDecode(bool lineBreaks) {
    const ul::String text = sarn::base64Encode(makePattern(3000).data(), 3000, true, lineBreaks);
    return [text] {
        Buffer out;
        sarn::base64Decode(text, out);
        return toBytes(out);
    };
}

Run runEncodeBuffer() {
    return [] {
        Buffer buffer;
        fill(buffer, makePattern(300));
        sarn::base64EncodeBufferWithCRLF(buffer);
        return toBytes(buffer);
    };
}

/// How many random bytes there are, in small and in large requests.
Run runRandom() {
    return [] {
        const ul::P<ul::CMTRand> generator = ul::make<ul::CMTRand>();
        Bytes bytes(2000);
        generator->randData(bytes.data(), 16);
        generator->randData(bytes.data() + 16, 1984);
        return Bytes(1, 1);
    };
}

Run runFind() {
    const ul::P<sarn::CCipherManager> manager = sarn::CCipherManager::get();
    return [manager] { return toUTF8Bytes(manager->getCipher("aes256cbc")->getID()); };
}

Run runRegister() {
    const ul::P<sarn::CCipherManager> manager = ul::make<sarn::CCipherManager>();
    return [manager] {
        manager->addCipher(ul::make<sarn::CCipher_Null>().get());
        return toUTF8Bytes(manager->getCipher("null")->getID());
    };
}

Run runCreateRegistry() {
    return [] { return toUTF8Bytes(ul::make<sarn::CCipherManager>()->getCipher("cast128cbc")->getID()); };
}

} // namespace

Scenarios makeKeyScenarios() {
    const std::vector<std::string> hmac = {"Error computing HMAC digest."};
    const std::vector<std::string> derive = {"Error deriving cryptographic key from password."};
    const std::vector<std::string> base64 = {"Internal error: error during base64 encode.",
                                             "Internal error: error during base64 decode.", "invalid base64 data"};
    return {
        {"HMAC", hmac, runHMAC},
        {"DeriveKey", derive, runDeriveKey},
        {"CacheOfItsOwn", derive, [] { return runCache(nullptr); }},
        {"SharedCache", derive, [] { return runCache(makeCache()); }},
        {"Base64Encode", base64, [] { return runEncode(false); }},
        {"Base64EncodeLines", base64, [] { return runEncode(true); }},
        {"Base64Decode", base64, [] { return runDecode(false); }},
        {"Base64DecodeLines", base64, [] { return runDecode(true); }},
        {"Base64EncodeBuffer", base64, runEncodeBuffer},
        {"RandomBytes", {"Random bytes are not available."}, runRandom},
        {"FindCipher", {}, runFind},
        {"RegisterCipher", {}, runRegister},
        {"CreateRegistry", {}, runCreateRegistry},
    };
}

} // namespace sarn_test
