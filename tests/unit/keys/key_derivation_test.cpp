// SPDX-License-Identifier: Apache-2.0
// Keys that are derived from passwords, and the cache of such keys.
#include "support/expect.h"
#include "support/password_keys.h"
#include "support/threads.h"

#include <openssl/err.h>
#include <openssl/evp.h>

namespace sarn_test {

namespace {

using sarn::CPasswordKeyCache;
using CKeyInfo = CPasswordKeyCache::CKeyInfo;
using Key = ul::PC<ul::TCryptBuffer<unsigned char>>;

static_assert(!std::is_copy_constructible_v<CPasswordKeyCache> && !std::is_move_constructible_v<CPasswordKeyCache>);
static_assert(std::is_trivially_copyable_v<CKeyInfo> && !std::is_polymorphic_v<CKeyInfo>);
static_assert(sizeof(CKeyInfo) == (sizeof(void*) == 8 ? 24 : 16));

const std::string zeroSalt(8, '\0');

std::string derive(const std::string& password, const std::string& salt, int iterations, int size) {
    return toHex(deriveKey(password, salt, iterations, size));
}

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

std::string toHexText(const Key& key) {
    return toHex(toBytes(*key));
}

/// The result of an action, or the message of its error.
template <class Action>
std::string getOrRefuse(Action action) {
    try {
        return action();
    } catch (const ul::CError& error) {
        return error.what();
    }
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

TEST(CPasswordKeyCache, GetKey_DerivesWithTheSaltsBytesLeastSignificantFirst_AKeyThatOutlivesItsCache) {
    EXPECT_EQ(toHexText(makeKeyCache()->getKey(32, 258, 1000)),
              "ecf3fb9c0588202d48782ee93de14e7780a4902131c1dcf8b44d3ba207ce7df2");
    const ul::P<CPasswordKeyCache> cache = makeKeyCache();
    EXPECT_EQ(toHexText(cache->getKey(16, 0x8877665544332211, 3)),
              derive("password", "\x11\x22\x33\x44\x55\x66\x77\x88", 3, 16));
    EXPECT_EQ(toHexText(cache->getKey(20, 0, 1)), derive("password", zeroSalt, 1, 20));
}

TEST(CPasswordKeyCache, GetKey_CalledAgain_ReturnsTheSameBuffer_AndOtherArgumentsHaveEntriesOfTheirOwn) {
    const ul::P<CPasswordKeyCache> cache = makeKeyCache();
    const Key longKey = cache->getKey(32, 7, 1000);
    const Key shortKey = cache->getKey(16, 7, 1000);
    EXPECT_EQ(longKey->getUsed(), 32) << "it fits a cipher";
    EXPECT_EQ(toHexText(shortKey), toHexText(longKey).substr(0, 32));
    EXPECT_EQ(cache->getKey(32, 7, 1000), longKey);
    for (const Key& other : {shortKey, cache->getKey(32, 7, 1001), cache->getKey(32, 8, 1000)})
        EXPECT_NE(other, longKey);
}

TEST(CPasswordKeyCache, UnusualArguments_ReachTheDerivationUnchanged) {
    const ul::P<CPasswordKeyCache> cache = makeKeyCache();
    for (const auto& odd : {std::pair(0, 1), std::pair(32, 0), std::pair(32, -1), std::pair(32, INT_MIN)})
        EXPECT_EQ(getOrRefuse([&] { return toHexText(cache->getKey(odd.first, 0, odd.second)); }),
                  getOrRefuse([&] { return derive("password", zeroSalt, odd.second, odd.first); }));
}

TEST(CPasswordKeyCache, EmptyPassword_IsAccepted) {
    // By hashlib.pbkdf2_hmac of Python.
    EXPECT_EQ(toHexText(makeKeyCache("")->getKey(32, 258, 1000)),
              "2d639a0ff3c193565c491e99d65189c18f42bcaf218a10e46997b945532bedcd");
}

TEST(CPasswordKeyCache, Password_IsCopied) {
    ul::TCryptBuffer<char> password;
    password.init("password", 8);
    const ul::P<CPasswordKeyCache> cache = ul::make<CPasswordKeyCache>(password);
    password.init("other", 5);
    EXPECT_EQ(toHexText(cache->getKey(20, 0, 1)), derive("password", zeroSalt, 1, 20));
}

TEST(CPasswordKeyCache, FailedDerivation_RaisesAndUnlocksTheMutex_AndIsTriedAgain) {
    const ul::P<CPasswordKeyCache> cache = makeKeyCache();
    for (int i = 0; i < 3; ++i)
        expectError(deriveError, [&] { cache->getKey(-1, 7, 1000); });
    Key key;
    std::thread([&] { key = cache->getKey(32, 258, 1000); }).join();
    EXPECT_TRUE(key);
}

TEST(CPasswordKeyCache, ThreadsThatAskForTheSameNewKey_ShareOneDerivation) {
    const ul::P<CPasswordKeyCache> cache = makeKeyCache();
    std::vector<Key> keys(8);
    runOnThreads(8, [&](int i) { keys[static_cast<std::size_t>(i)] = cache->getKey(32, 1, 20000); });
    EXPECT_EQ(keys, std::vector<Key>(8, keys.front()));
}

TEST(CKeyInfo, Compare_DecidesByKeySizeThenSaltThenIterations) {
    const unsigned long long allBits = ~0ULL;
    EXPECT_EQ(CKeyInfo(1, 5, 7).compare(CKeyInfo(2, 0, 0)), -1);
    EXPECT_EQ(CKeyInfo(1, allBits, 0).compare(CKeyInfo(1, 1, 0)), 1) << "the salt is unsigned";
    EXPECT_EQ(CKeyInfo(-1, 0, 0).compare(CKeyInfo(0, 0, 0)), -1) << "the size is signed";
    EXPECT_EQ(CKeyInfo(1, 1, -1).compare(CKeyInfo(1, 1, 0)), -1) << "so is the count";
    EXPECT_EQ(CKeyInfo(1, 2, 9).compare(CKeyInfo(1, 3, 0)), -1) << "the salt comes before the count";
    EXPECT_EQ(CKeyInfo(1, 3, 0).compare(CKeyInfo(1, 2, 9)), 1);
    EXPECT_EQ(CKeyInfo(3, 4, 5).compare(CKeyInfo(3, 4, 5)), 0);
}

TEST(CKeyInfo, Operators_FollowCompare) {
    const CKeyInfo small(1, 2, 3);
    const CKeyInfo large(1, 2, 4);
    EXPECT_TRUE(large.keySize == 1 && large.salt == 2 && large.iterations == 4);
    CKeyInfo copy = large;
    EXPECT_TRUE(small < large && small <= large && small <= small && large > small && large >= small && large >= large);
    EXPECT_TRUE(small != large && copy == large && !(small == large) && !(small > large) && !(small >= large));
    EXPECT_FALSE(large <= small || copy != large || large < small || small < small || large > large);
    copy = small;
    EXPECT_TRUE(copy == small);
}

} // namespace sarn_test
