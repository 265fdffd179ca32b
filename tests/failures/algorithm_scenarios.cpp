// SPDX-License-Identifier: Apache-2.0
#include "failures/scenarios.h"
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"
#include "support/password_keys.h"

#include "ul/random.h"

namespace sarn_test {

namespace {

const Bytes iv = makePattern(16);
const Bytes text = makePattern(100);

/// A buffer after an operation has appended its result to it, or put it into it.
Bytes apply(const std::string& id, const CipherOperation& operation, const Bytes& input, bool append,
            const Bytes& givenIV = iv) {
    const ul::P<sarn::ICipher> cipher = getAnyCipher(id);
    Buffer out = makeBuffer(makePattern(append ? 5 : 0));
    (cipher.get()->*operation.function)(TestKey(cipher->getKeySize()), input.data(), static_cast<int>(input.size()),
                                        out, append, givenIV.empty() ? nullptr : givenIV.data());
    return toBytes(out);
}

/// Encrypts and decrypts, under a random IV if none is given: the plaintext is the same each time.
Bytes restore(const std::string& id, bool append, const Bytes& givenIV) {
    return apply(id, decrypting, apply(id, encrypting, text, false, givenIV), append, givenIV);
}

/// Repeats `use` with one digest, which the first call creates.
template <class Use>
Run useDigest(const std::string& id, Use use) {
    return [id, use, digest = ul::P<sarn::IDigest>()]() mutable {
        if (!digest)
            digest = createDigest(id);
        return use(*digest);
    };
}

Bytes digestTwoPieces(sarn::IDigest& digest) {
    digest.reset();
    feed(digest, makePattern(100));
    feed(digest, makePattern(3000));
    return finish(digest);
}

Bytes saveAndResume(sarn::IDigest& digest) {
    digest.reset();
    feed(digest, makePattern(100));
    const Bytes state = storeState(digest);
    feed(digest, makePattern(10));
    loadState(digest, state);
    return finish(digest);
}

const Bytes data = makePattern(3000);

Bytes authenticate() {
    Buffer out;
    sarn::calcHMAC_SHA1(out, "data", 4, "key", 3);
    return toBytes(out);
}

Bytes useSharedCache() {
    static const ul::P<sarn::CPasswordKeyCache> cache = makeKeyCache("secret");
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
    Buffer buffer = makeBuffer(data);
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

Scenarios makeCipherScenarios() {
    Scenarios scenarios;
    for (const std::string& id : getCipherIDs()) {
        const auto add = [&](const char* name, const Run& run) { scenarios.push_back({name + ("_" + id), run}); };
        add("Encrypt", [=] { return apply(id, encrypting, text, false); });
        add("EncryptAppended", [=] { return apply(id, encrypting, text, true); });
        add("EncryptUnpadded", [=] { return apply(id, encryptingUnpadded, text, true); });
        add("DecryptUnpadded", [=] { return apply(id, decryptingUnpadded, makePattern(96), false); });
        add("Decrypt", [=] { return restore(id, false, iv); });
        add("DecryptAppended", [=] { return restore(id, true, iv); });
        add("RoundTrip", [=] { return restore(id, false, {}); });
    }
    return scenarios;
}

Scenarios makeDigestScenarios() {
    Scenarios scenarios;
    for (const std::string id : digestIDs) {
        std::string name = id;
        std::replace(name.begin(), name.end(), '-', '_');
        scenarios.push_back({"Digest_" + name, useDigest(id, digestTwoPieces)});
        scenarios.push_back({"CreateDigest_" + name, [=] { return getDigest(id, makePattern(10)); }, false, true});
        scenarios.push_back({"SaveAndResume_" + name, useDigest(id, saveAndResume)});
    }
    return scenarios;
}

Scenarios makeKeyScenarios() {
    return {
        {"HMAC", authenticate},
        {"DeriveKey", [] { return deriveKey("secret", "saltsalt", 3, 32); }},
        {"CacheOfItsOwn", [] { return toBytes(*makeKeyCache("secret")->getKey(32, 1, 3)); }},
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
