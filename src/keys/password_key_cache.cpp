// SPDX-License-Identifier: Apache-2.0
#include "sarn/password_key_cache.h"

#include "sarn/encoding.h"

#include <array>

namespace sarn {

namespace {

template <class T>
int compareNumbers(T left, T right) {
    return left < right ? -1 : (left > right ? 1 : 0);
}

/// The eight bytes of a salt, the least significant first.
std::array<unsigned char, 8> toBytes(unsigned long long salt) {
    std::array<unsigned char, 8> bytes;
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(salt);
        salt >>= 8;
    }
    return bytes;
}

} // namespace

int CPasswordKeyCache::CKeyInfo::compare(const CKeyInfo& other) const noexcept {
    if (m_keySize != other.m_keySize)
        return compareNumbers(m_keySize, other.m_keySize);
    if (m_salt != other.m_salt)
        return compareNumbers(m_salt, other.m_salt);
    return compareNumbers(m_iterations, other.m_iterations);
}

CPasswordKeyCache::CPasswordKeyCache(const ul::TCryptBuffer<char>& password) : m_password(password) {}

CPasswordKeyCache::~CPasswordKeyCache() = default;

ul::PC<ul::TCryptBuffer<unsigned char>> CPasswordKeyCache::getKey(int keySize, unsigned long long salt,
                                                                  int iterations) {
    const ul::CMutexLock lock(static_cast<ul::IMutex&>(m_mutex));
    ul::P<ul::TCryptBuffer<unsigned char>>& entry = m_keys.findOrInsert(CKeyInfo(keySize, salt, iterations));
    if (!entry) {
        const ul::P<ul::TCryptBuffer<unsigned char>> key = ul::make<ul::TCryptBuffer<unsigned char>>(keySize, -1);
        const std::array<unsigned char, 8> saltBytes = toBytes(salt);
        deriveKey_PKCS5_PBKDF2_HMAC_SHA1(m_password.getData(), m_password.getUsed(), saltBytes.data(),
                                         static_cast<int>(saltBytes.size()), iterations, keySize, key->getData());
        entry = key;
    }
    return entry;
}

} // namespace sarn
