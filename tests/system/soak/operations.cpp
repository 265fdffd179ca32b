// SPDX-License-Identifier: Apache-2.0
#include "system/soak/operations.h"

#include "sarn/encoding.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace sarn_soak {

namespace {

using Buffer = ul::TBuffer<unsigned char>;
using Bytes = std::vector<unsigned char>;

constexpr char text[] = "the only copy of somebody's data";
constexpr int textSize = sizeof text - 1;
constexpr unsigned long long saltCount = 16;
const IV zeroIV{};

Bytes toBytes(const Buffer& buffer) {
    return Bytes(buffer.getData(), buffer.getData() + buffer.getUsed());
}

ul::TCryptBuffer<char> getPassword() {
    ul::TCryptBuffer<char> password;
    password.init("correct horse", 13);
    return password;
}

Bytes computeDigest() {
    const ul::P<sarn::IDigest> digest = sarn::CDigestManager::get()->getType("md4-sha1-adler32")->createDigest();
    digest->update(text, textSize);
    digest->finish();
    Bytes result(static_cast<std::size_t>(digest->getDigestSize()));
    digest->storeDigestData(result.data());
    return result;
}

} // namespace

void check(bool holds, const char* what) {
    if (!holds)
        throw std::runtime_error(std::string("wrong: ") + what);
}

void checkNoneIsRepeated(std::vector<IV>& ivs) {
    std::sort(ivs.begin(), ivs.end());
    check(std::adjacent_find(ivs.begin(), ivs.end()) == ivs.end(), "an initialisation vector came twice");
}

Shared::Shared()
    : m_cipher(sarn::CCipherManager::get()->getCipher("aes256cbc")),
      m_digest(computeDigest()),
      m_cache(ul::make<sarn::CPasswordKeyCache>(getPassword())) {
    m_key.init(reinterpret_cast<const unsigned char*>(text), 32);
    Buffer out;
    m_cipher->encrypt(m_key, text, textSize, out, false, zeroIV.data());
    m_encrypted = toBytes(out);
    // By another object, so that the shared one starts empty.
    const auto cache = ul::make<sarn::CPasswordKeyCache>(getPassword());
    for (unsigned long long salt = 0; salt < saltCount; ++salt)
        m_keys.push_back(toBytes(*cache->getKey(32, salt, 2)));
}

void Shared::use(std::mt19937& random, std::vector<IV>& ivs) const {
    switch (random() % 8) {
    case 0:
        ivs.push_back(drawIV());
        break;
    case 1:
    case 2:
        useCipher();
        break;
    case 3:
        useRegistries(random);
        break;
    case 4:
        useDigest();
        break;
    case 5:
        useEncodings();
        break;
    default:
        useCache(random);
    }
}

IV Shared::drawIV() const {
    Buffer encrypted;
    Buffer decrypted;
    m_cipher->encrypt(m_key, text, textSize, encrypted, false, nullptr);
    m_cipher->decrypt(m_key, encrypted.getData(), encrypted.getUsed(), decrypted, false, nullptr);
    check(toBytes(decrypted) == Bytes(text, text + textSize), "what was encrypted decrypts to something else");
    IV iv;
    std::copy_n(encrypted.getData(), iv.size(), iv.begin());
    return iv;
}

void Shared::useCipher() const {
    Buffer out;
    m_cipher->encrypt(m_key, text, textSize, out, false, zeroIV.data());
    check(toBytes(out) == m_encrypted, "a ciphertext");
}

void Shared::useRegistries(std::mt19937& random) const {
    const ul::P<sarn::CCipherManager>& ciphers = sarn::CCipherManager::get();
    if (random() % 64 == 0)
        ciphers->addCipher(ul::make<sarn::CCipher_Null>().get());
    check(ciphers->getCipher("null")->getID() == "null", "a cipher's identifier");
    check(!ciphers->findCipher("unknown"), "an unknown cipher");
    check(sarn::CDigestManager::get()->getType("sha256")->getDigestSize() == 32, "a digest's size");
}

void Shared::useDigest() const {
    check(computeDigest() == m_digest, "a digest");
}

void Shared::useCache(std::mt19937& random) const {
    const unsigned long long salt = random() % saltCount;
    const auto key = m_cache->getKey(32, salt, 2);
    check(toBytes(*key) == m_keys[static_cast<std::size_t>(salt)], "a derived key");
    check(m_cache->getKey(32, salt, 2).get() == key.get(), "a cached key is the same object");
}

void Shared::useEncodings() const {
    Buffer decoded;
    sarn::base64Decode(sarn::base64Encode(text, textSize, true, true), decoded);
    check(toBytes(decoded) == Bytes(text, text + textSize), "decoded Base64");
}

} // namespace sarn_soak
