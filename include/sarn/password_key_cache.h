// SPDX-License-Identifier: Apache-2.0
/// \file
/// Keys derived from a password, each once.
#pragma once

#include "sarn/object_model.h"

#include "ul/map.h"
#include "ul/mutex.h"

namespace sarn {

/// Holds a password and the keys that were derived from it. Both are wiped when they are freed. Safe from any thread.
class SARN_EXPORT CPasswordKeyCache : public ul::CBase {
public:
    /// A plain value: all that a derived key depends on beside the password.
    class SARN_EXPORT CKeyInfo {
    public:
        CKeyInfo(int keySize, unsigned long long salt, int iterations) noexcept;

        /// -1, 0 or 1. The key size decides, then the salt, an unsigned number, then the iteration count.
        int compare(const CKeyInfo& other) const noexcept;

        /// Whether compare() gives 0.
        bool operator==(const CKeyInfo& other) const noexcept;
        /// Whether compare() does not give 0.
        bool operator!=(const CKeyInfo& other) const noexcept;
        /// Whether compare() gives -1.
        bool operator<(const CKeyInfo& other) const noexcept;
        /// Whether compare() does not give 1.
        bool operator<=(const CKeyInfo& other) const noexcept;
        /// Whether compare() gives 1.
        bool operator>(const CKeyInfo& other) const noexcept;
        /// Whether compare() does not give -1.
        bool operator>=(const CKeyInfo& other) const noexcept;

        int keySize; ///< in bytes
        unsigned long long salt;
        int iterations;
    };

    /// Copies the used bytes of `password`.
    explicit CPasswordKeyCache(const ul::TCryptBuffer<char>& password);
    CPasswordKeyCache(const CPasswordKeyCache&) = delete;
    CPasswordKeyCache& operator=(const CPasswordKeyCache&) = delete;
    ~CPasswordKeyCache() override;

    /// The key of `keySize` bytes for a salt, whose eight bytes are taken least significant first, and an iteration
    /// count (PBKDF2 with HMAC-SHA1). It is derived on the first call, which takes long and which other threads that
    /// use this cache wait for; from then on every caller shares the same buffer.
    /// \throws ul::CError "Error deriving cryptographic key from password."; the next call tries again
    ul::PC<ul::TCryptBuffer<unsigned char>> getKey(int keySize, unsigned long long salt, int iterations);

private:
    ul::CMutex m_mutex;
    ul::TCryptBuffer<char> m_password;
    // An entry whose derivation failed stays, without a key.
    ul::TMap<CKeyInfo, ul::P<ul::TCryptBuffer<unsigned char>>> m_keys;
};

} // namespace sarn
