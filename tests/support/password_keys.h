// SPDX-License-Identifier: Apache-2.0
// Keys that are derived from passwords.
#pragma once

#include "support/vectors.h"

#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"

#include <cstdlib>

namespace sarn_test {

constexpr char deriveError[] = "Error deriving cryptographic key from password.";

inline Bytes deriveKey(const std::string& password, const std::string& salt, int iterations, int size) {
    Bytes key(static_cast<std::size_t>(std::abs(size)));
    sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1(password.data(), static_cast<int>(password.size()), salt.data(),
                                           static_cast<int>(salt.size()), iterations, size, key.data());
    return key;
}

inline ul::P<sarn::CPasswordKeyCache> makeKeyCache(const std::string& password = "password") {
    ul::TCryptBuffer<char> buffer;
    buffer.init(password.data(), static_cast<int>(password.size()));
    return ul::make<sarn::CPasswordKeyCache>(buffer);
}

} // namespace sarn_test
