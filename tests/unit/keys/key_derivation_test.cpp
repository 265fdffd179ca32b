// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"

#include "sarn/key_derivation.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <climits>

namespace sarn_test {

namespace {

std::string derive(const std::string& password, const std::string& salt, int iterations, int keySize) {
    Bytes key(static_cast<std::size_t>(keySize));
    sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1(password.data(), static_cast<int>(password.size()), salt.data(),
                                           static_cast<int>(salt.size()), iterations, keySize, key.data());
    return toHex(key);
}

constexpr char deriveError[] = "Error deriving cryptographic key from password.";

/// A key of up to 20 bytes by the library or by libcrypto, or a refusal.
std::string deriveBy(bool isLibcrypto, int passwordSize, int iterations, int keySize = 20) {
    Bytes key(20, 7);
    bool isDone = true;
    try {
        if (isLibcrypto)
            isDone = PKCS5_PBKDF2_HMAC_SHA1("password", passwordSize, reinterpret_cast<const unsigned char*>("salt"), 4,
                                            iterations, keySize, key.data()) == 1;
        else
            sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("password", passwordSize, "salt", 4, iterations, keySize,
                                                   key.data());
    } catch (const ul::CError& error) {
        EXPECT_STREQ(error.what(), deriveError);
        isDone = false;
    }
    ERR_clear_error();
    return (isDone ? "" : "refused ") + toHex(key);
}

} // namespace

TEST(DeriveKey, PublishedVectors_AreMet) {
    // RFC 6070.
    EXPECT_EQ(derive("password", "salt", 1, 20), "0c60c80f961f0e71f3a9b524af6012062fe037a6");
    EXPECT_EQ(derive("password", "salt", 2, 20), "ea6c014dc72d6f8ccd1ed92ace1d41f0d8de8957");
    EXPECT_EQ(derive("password", "salt", 4096, 20), "4b007901b765489abead49d926f721d065a429c1");
    EXPECT_EQ(derive("passwordPASSWORDpassword", "saltSALTsaltSALTsaltSALTsaltSALTsalt", 4096, 25),
              "3d2eec4fe41c849b80c8d83662c0e44a8b291a964cf2f07038");
    EXPECT_EQ(derive(std::string("pass\0word", 9), std::string("sa\0lt", 5), 4096, 16),
              "56fa6aa75548099dcc37d7f03425e0c3");
}

TEST(DeriveKey, PublishedVectorOf16777216Iterations_IsMet) {
    EXPECT_EQ(derive("password", "salt", 16777216, 20), "eefe3d61cd4da4e4e9945b3d6ba2158c2634e984");
}

TEST(DeriveKey, EmptyPasswordOrSalt_IsAccepted_AlsoAsANullPointer) {
    // By hashlib.pbkdf2_hmac of Python.
    constexpr char ofNoPassword[] = "a33dddc30478185515311f8752895d36ea4363a2";
    constexpr char ofNoSalt[] = "8754c32c64b0f524fc50c00f788135de2d2dd767";
    EXPECT_EQ(derive("", "salt", 1, 20), ofNoPassword);
    EXPECT_EQ(derive("password", "", 1, 20), ofNoSalt);
    Bytes key(20);
    sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1(nullptr, 0, "salt", 4, 1, 20, key.data());
    EXPECT_EQ(toHex(key), ofNoPassword);
    sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("password", 8, nullptr, 0, 1, 20, key.data());
    EXPECT_EQ(toHex(key), ofNoSalt);
}

TEST(DeriveKey, RefusedArguments_RaiseTheDocumentedErrorAndWriteNothing) {
    unsigned char key[20] = {7};
    const auto expectRefused = [&key](int passwordSize, const char* salt, int saltSize, int keySize, void* out) {
        expectError(deriveError, [&] {
            sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("password", passwordSize, salt, saltSize, 1, keySize, out);
        });
        EXPECT_EQ(key[0], 7);
        EXPECT_EQ(ERR_peek_error(), 0U) << "libcrypto's error queue is as it was";
    };
    expectRefused(8, "salt", 4, -1, key);
    expectRefused(8, "salt", 4, INT_MIN, key);
    expectRefused(8, "salt", -1, 20, key);
    expectRefused(-2, "salt", 4, 20, key); // libcrypto's own refusal
    for (const int size : {1, 20, -1, INT_MIN}) {
        expectRefused(8, nullptr, size, 20, key);
        expectRefused(8, "salt", 4, size, nullptr);
    }
}

TEST(DeriveKey, UnusualArguments_ReachLibcryptoUnchanged) {
    for (const int iterations : {0, -1, INT_MIN})
        EXPECT_EQ(deriveBy(false, 8, iterations), deriveBy(true, 8, iterations)) << iterations;
    EXPECT_EQ(deriveBy(false, 8, 1, 0), deriveBy(true, 8, 1, 0)) << "a key of no bytes";
    EXPECT_EQ(deriveBy(false, -1, 1), deriveBy(true, -1, 1));
    EXPECT_EQ(deriveBy(false, -1, 1), derive("password", "salt", 1, 20)) << "up to the terminating zero";
}

} // namespace sarn_test
