// SPDX-License-Identifier: Apache-2.0
// Uses of what threads share, each of which checks its result.
#pragma once

#include "sarn/cipher.h"
#include "sarn/digest.h"
#include "sarn/password_key_cache.h"

#include <array>
#include <random>
#include <vector>

namespace sarn_soak {

using IV = std::array<unsigned char, 16>;

/// What all threads of a process use.
class Shared {
public:
    Shared();

    /// Does one of the operations, chosen at random. Throws if its result is wrong. Initialisation vectors that a
    /// cipher drew are added to `ivs`.
    void use(std::mt19937& random, std::vector<IV>& ivs) const;

    /// Encrypts under a new initialisation vector and decrypts again.
    IV drawIV() const;

private:
    void useCipher() const;
    void useRegistries(std::mt19937& random) const;
    void useDigest() const;
    void useCache(std::mt19937& random) const;
    void useEncodings() const;

    ul::P<sarn::ICipher> m_cipher;
    ul::TCryptBuffer<unsigned char> m_key;
    std::vector<unsigned char> m_encrypted;
    std::vector<unsigned char> m_digest;
    ul::P<sarn::CPasswordKeyCache> m_cache;
    std::vector<std::vector<unsigned char>> m_keys;
};

/// Throws unless `holds`.
void check(bool holds, const char* what);

/// Throws if a vector is there twice.
void checkNoneIsRepeated(std::vector<IV>& ivs);

} // namespace sarn_soak
