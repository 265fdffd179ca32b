// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/threads.h"

#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"

#include <climits>
#include <cstring>
#include <thread>
#include <type_traits>

namespace sarn_test {

namespace {

using sarn::CPasswordKeyCache;
using CKeyInfo = CPasswordKeyCache::CKeyInfo;
using Key = ul::PC<ul::TCryptBuffer<unsigned char>>;

constexpr char deriveError[] = "Error deriving cryptographic key from password.";

static_assert(!std::is_copy_constructible_v<CPasswordKeyCache> && !std::is_move_constructible_v<CPasswordKeyCache>);
static_assert(std::is_trivially_copyable_v<CKeyInfo> && !std::is_polymorphic_v<CKeyInfo>);
static_assert(sizeof(CKeyInfo) == (sizeof(void*) == 8 ? 24 : 16));

ul::P<CPasswordKeyCache> makeCache(const char* password) {
    ul::TCryptBuffer<char> buffer;
    buffer.init(password, static_cast<int>(std::strlen(password)));
    return ul::make<CPasswordKeyCache>(buffer);
}

std::string toHexText(const Key& key) {
    return toHex(toBytes(*key));
}

/// The key that the cache should derive.
std::string derive(const char* password, const Bytes& salt, int iterations, int size) {
    Bytes key(static_cast<std::size_t>(size));
    sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1(password, static_cast<int>(std::strlen(password)), salt.data(), 8,
                                           iterations, size, key.data());
    return toHex(key);
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

TEST(CPasswordKeyCache, GetKey_DerivesWithTheSaltsBytesLeastSignificantFirst_AKeyThatOutlivesItsCache) {
    EXPECT_EQ(toHexText(makeCache("password")->getKey(32, 258, 1000)),
              "ecf3fb9c0588202d48782ee93de14e7780a4902131c1dcf8b44d3ba207ce7df2");
    const ul::P<CPasswordKeyCache> cache = makeCache("password");
    EXPECT_EQ(toHexText(cache->getKey(16, 0x8877665544332211, 3)),
              derive("password", {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88}, 3, 16));
    EXPECT_EQ(toHexText(cache->getKey(20, 0, 1)), derive("password", Bytes(8), 1, 20));
}

TEST(CPasswordKeyCache, GetKey_CalledAgain_ReturnsTheSameBuffer_AndOtherArgumentsHaveEntriesOfTheirOwn) {
    const ul::P<CPasswordKeyCache> cache = makeCache("password");
    const Key longKey = cache->getKey(32, 7, 1000);
    const Key shortKey = cache->getKey(16, 7, 1000);
    EXPECT_EQ(longKey->getUsed(), 32) << "it fits a cipher";
    EXPECT_EQ(toHexText(shortKey), toHexText(longKey).substr(0, 32));
    EXPECT_EQ(cache->getKey(32, 7, 1000), longKey);
    for (const Key& other : {shortKey, cache->getKey(32, 7, 1001), cache->getKey(32, 8, 1000)})
        EXPECT_NE(other, longKey);
}

TEST(CPasswordKeyCache, UnusualArguments_ReachTheDerivationUnchanged) {
    const ul::P<CPasswordKeyCache> cache = makeCache("password");
    for (const auto& odd : {std::pair(0, 1), std::pair(32, 0), std::pair(32, -1), std::pair(32, INT_MIN)})
        EXPECT_EQ(getOrRefuse([&] { return toHexText(cache->getKey(odd.first, 0, odd.second)); }),
                  getOrRefuse([&] { return derive("password", Bytes(8), odd.second, odd.first); }));
}

TEST(CPasswordKeyCache, EmptyPassword_IsAccepted) {
    // By hashlib.pbkdf2_hmac of Python.
    EXPECT_EQ(toHexText(makeCache("")->getKey(32, 258, 1000)),
              "2d639a0ff3c193565c491e99d65189c18f42bcaf218a10e46997b945532bedcd");
}

TEST(CPasswordKeyCache, Password_IsCopied) {
    ul::TCryptBuffer<char> password;
    password.init("password", 8);
    const ul::P<CPasswordKeyCache> cache = ul::make<CPasswordKeyCache>(password);
    password.init("other", 5);
    EXPECT_EQ(toHexText(cache->getKey(20, 0, 1)), derive("password", Bytes(8), 1, 20));
}

TEST(CPasswordKeyCache, FailedDerivation_RaisesAndUnlocksTheMutex_AndIsTriedAgain) {
    const ul::P<CPasswordKeyCache> cache = makeCache("password");
    for (int i = 0; i < 3; ++i)
        expectError(deriveError, [&] { cache->getKey(-1, 7, 1000); });
    Key key;
    std::thread([&] { key = cache->getKey(32, 258, 1000); }).join();
    EXPECT_TRUE(key);
}

TEST(CPasswordKeyCache, ThreadsThatAskForTheSameNewKey_ShareOneDerivation) {
    const ul::P<CPasswordKeyCache> cache = makeCache("password");
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
    EXPECT_TRUE(small < large && small <= large && small <= small && large > small && large >= small);
    EXPECT_TRUE(small != large && copy == large && !(small == large) && !(small > large) && !(small >= large));
    EXPECT_FALSE(large <= small || copy != large || large < small || small < small || large > large);
    copy = small;
    EXPECT_TRUE(copy == small);
}

} // namespace sarn_test
