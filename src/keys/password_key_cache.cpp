// SPDX-License-Identifier: Apache-2.0
#include "sarn/password_key_cache.h"

#include "sarn/key_derivation.h"

#include <array>

namespace sarn {

namespace {

template <class T>
int compareNumbers(T left, T right) {
    return left < right ? -1 : (left > right ? 1 : 0);
}

/// The eight bytes of a salt, least significant first.
std::array<unsigned char, 8> toBytes(unsigned long long salt) {
    std::array<unsigned char, 8> bytes;
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(salt);
        salt >>= 8;
    }
    return bytes;
}

} // namespace

// The parameters are not named like the fields, because some compilers warn about shadowing.
CPasswordKeyCache::CKeyInfo::CKeyInfo(int size, unsigned long long saltNumber, int count) noexcept
    : keySize(size), salt(saltNumber), iterations(count) {}

int CPasswordKeyCache::CKeyInfo::compare(const CKeyInfo& other) const noexcept {
    if (keySize != other.keySize)
        return compareNumbers(keySize, other.keySize);
    if (salt != other.salt)
        return compareNumbers(salt, other.salt);
    return compareNumbers(iterations, other.iterations);
}

bool CPasswordKeyCache::CKeyInfo::operator==(const CKeyInfo& other) const noexcept {
    return compare(other) == 0;
}

bool CPasswordKeyCache::CKeyInfo::operator!=(const CKeyInfo& other) const noexcept {
    return compare(other) != 0;
}

bool CPasswordKeyCache::CKeyInfo::operator<(const CKeyInfo& other) const noexcept {
    return compare(other) < 0;
}

bool CPasswordKeyCache::CKeyInfo::operator<=(const CKeyInfo& other) const noexcept {
    return compare(other) <= 0;
}

bool CPasswordKeyCache::CKeyInfo::operator>(const CKeyInfo& other) const noexcept {
    return compare(other) > 0;
}

bool CPasswordKeyCache::CKeyInfo::operator>=(const CKeyInfo& other) const noexcept {
    return compare(other) >= 0;
}

CPasswordKeyCache::CPasswordKeyCache(const ul::TCryptBuffer<char>& password) : m_password(password) {}

CPasswordKeyCache::~CPasswordKeyCache() = default;

ul::PC<ul::TCryptBuffer<unsigned char>> CPasswordKeyCache::getKey(int keySize, unsigned long long salt,
                                                                  int iterations) {
    const ul::CMutexLock lock(m_mutex);
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
