// SPDX-License-Identifier: Apache-2.0
/// \file
/// A cache of keys derived from a password.
#pragma once

#include "sarn/object_model.h"

#include "ul/map.h"
#include "ul/mutex.h"

namespace sarn {

/// Holds a password and the keys derived from it. All are wiped when they are freed. Safe from any thread.
class SARN_EXPORT CPasswordKeyCache : public ul::CBase {
public:
    /// Identifies a derived key: a plain value with everything besides the password that the key depends on.
    class SARN_EXPORT CKeyInfo {
    public:
        /// Copies the three values.
        CKeyInfo(int keySize, unsigned long long salt, int iterations) noexcept;

        /// Returns -1, 0 or 1. Orders by key size, then by salt as an unsigned number, then by iteration count.
        int compare(const CKeyInfo& other) const noexcept;

        /// Whether compare() returns 0.
        bool operator==(const CKeyInfo& other) const noexcept;
        /// Whether compare() does not return 0.
        bool operator!=(const CKeyInfo& other) const noexcept;
        /// Whether compare() returns -1.
        bool operator<(const CKeyInfo& other) const noexcept;
        /// Whether compare() does not return 1.
        bool operator<=(const CKeyInfo& other) const noexcept;
        /// Whether compare() returns 1.
        bool operator>(const CKeyInfo& other) const noexcept;
        /// Whether compare() does not return -1.
        bool operator>=(const CKeyInfo& other) const noexcept;

        /// Size of the key in bytes.
        int keySize;
        /// The salt, used as eight bytes, least significant first.
        unsigned long long salt;
        /// Iteration count of PBKDF2.
        int iterations;
    };

    /// Copies the used bytes of `password`.
    explicit CPasswordKeyCache(const ul::TCryptBuffer<char>& password);
    CPasswordKeyCache(const CPasswordKeyCache&) = delete;
    CPasswordKeyCache& operator=(const CPasswordKeyCache&) = delete;
    ~CPasswordKeyCache() override;

    /// The key of `keySize` bytes by PBKDF2 with HMAC-SHA1 for a salt, used as eight bytes, least significant first,
    /// and an iteration count. The first call derives it, which is slow; other threads that use this cache wait. All
    /// callers share the same buffer.
    /// \throws ul::CError "Error deriving cryptographic key from password."; the next call tries again.
    ul::PC<ul::TCryptBuffer<unsigned char>> getKey(int keySize, unsigned long long salt, int iterations);

private:
    ul::CMutex m_mutex;
    ul::TCryptBuffer<char> m_password;
    // An entry without a key remains after a failed derivation.
    ul::TMap<CKeyInfo, ul::P<ul::TCryptBuffer<unsigned char>>> m_keys;
};

} // namespace sarn
