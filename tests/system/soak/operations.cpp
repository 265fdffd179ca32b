// SPDX-License-Identifier: Apache-2.0
#include "support/digest_test_data.h"
#include "support/password_keys.h"
#include "system/soak/soak.h"

namespace sarn_test {

namespace {

// At the end of the process, when other threads still use these objects, nothing may destroy them.
constexpr char text[] = "the only copy of somebody's data";
constexpr int textSize = sizeof text - 1;
constexpr unsigned long long saltCount = 16;
const IV zeroIV{};

Bytes getText() {
    return Bytes(text, text + textSize);
}

void check(bool holds, const char* what) {
    if (!holds)
        throw std::runtime_error(std::string("wrong: ") + what);
}

Bytes computeDigest() {
    return getDigest("md4-sha1-adler32", getText());
}

void useEncodings(std::mt19937& random) {
    ul::TBuffer<unsigned char> decoded;
    sarn::base64Decode(sarn::base64Encode(text, textSize, true, true), decoded);
    check(toBytes(decoded) == getText(), "decoded Base64");
    const std::string key = std::to_string(random());
    Buffer hmacs[2];
    for (Buffer& hmac : hmacs)
        sarn::calcHMAC_MD5(hmac, text, textSize, key.data(), static_cast<int>(key.size()));
    check(toBytes(hmacs[0]) == toBytes(hmacs[1]), "an HMAC");
}

} // namespace

void checkNoneIsRepeated(std::vector<IV>& ivs) {
    std::sort(ivs.begin(), ivs.end());
    check(std::adjacent_find(ivs.begin(), ivs.end()) == ivs.end(), "an IV came twice");
}

Shared::Shared() : m_encrypted(encrypt(zeroIV.data())), m_digest(computeDigest()), m_cache(makeKeyCache()) {
    // Another cache derives the keys, so that the shared one starts empty.
    const ul::P<sarn::CPasswordKeyCache> cache = makeKeyCache();
    for (unsigned long long salt = 0; salt < saltCount; ++salt)
        m_keys.push_back(toBytes(*cache->getKey(32, salt, 2)));
}

void Shared::use(std::mt19937& random, std::vector<IV>& ivs) const {
    const auto number = random() % 8;
    if (number == 0)
        ivs.push_back(drawIV());
    else if (number <= 2)
        check(encrypt(zeroIV.data()) == m_encrypted, "a ciphertext");
    else if (number == 3)
        useRegistries(random);
    else if (number == 4)
        check(computeDigest() == m_digest, "a digest");
    else if (number == 5)
        useEncodings(random);
    else
        useCache(random);
}

IV Shared::drawIV() const {
    const Bytes encrypted = encrypt(nullptr);
    ul::TBuffer<unsigned char> decrypted;
    m_cipher->decrypt(m_key, encrypted.data(), static_cast<int>(encrypted.size()), decrypted, false, nullptr);
    check(toBytes(decrypted) == getText(), "a decrypted text");
    IV iv;
    std::copy_n(encrypted.begin(), iv.size(), iv.begin());
    return iv;
}

Bytes Shared::encrypt(const unsigned char* iv) const {
    ul::TBuffer<unsigned char> out;
    m_cipher->encrypt(m_key, text, textSize, out, false, iv);
    return toBytes(out);
}

void Shared::useRegistries(std::mt19937& random) const {
    const ul::P<sarn::CCipherManager>& ciphers = sarn::CCipherManager::get();
    if (random() % 64 == 0)
        ciphers->addCipher(ul::make<sarn::CCipher_Null>().get());
    check(ciphers->getCipher("null")->getID() == "null", "a cipher's identifier");
    check(!ciphers->findCipher("unknown"), "an unknown cipher");
    check(sarn::CDigestManager::get()->getType("sha256")->getDigestSize() == 32, "a digest's size");
}

void Shared::useCache(std::mt19937& random) const {
    const unsigned long long salt = random() % saltCount;
    const auto key = m_cache->getKey(32, salt, 2);
    check(toBytes(*key) == m_keys[static_cast<std::size_t>(salt)], "a derived key");
    check(m_cache->getKey(32, salt, 2).get() == key.get(), "a cached key is the same object");
}

} // namespace sarn_test
