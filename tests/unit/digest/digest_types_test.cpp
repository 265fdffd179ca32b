// SPDX-License-Identifier: Apache-2.0
#include "support/digest_test_data.h"
#include "support/threads.h"

#include <type_traits>

namespace sarn_test {

namespace {

using sarn::CDigestManager;

template <class T>
constexpr bool isCopyableAndMovable = std::is_default_constructible_v<T>&& std::is_copy_constructible_v<T>&&
    std::is_copy_assignable_v<T>&& std::is_move_constructible_v<T>&& std::is_move_assignable_v<T>;

static_assert(isCopyableAndMovable<sarn::CDigestType_MD4> && isCopyableAndMovable<sarn::CDigestType_MD5> &&
              isCopyableAndMovable<sarn::CDigestType_SHA1> && isCopyableAndMovable<sarn::CDigestType_SHA256> &&
              isCopyableAndMovable<sarn::CDigestType_Adler32> && isCopyableAndMovable<sarn::CDigestType_CRC32> &&
              isCopyableAndMovable<sarn::CDigestType_MD4_SHA1> &&
              isCopyableAndMovable<sarn::CDigestType_MD4_SHA1_Adler32>);
static_assert(std::is_copy_constructible_v<sarn::CDigest_Adler32> && std::is_copy_assignable_v<sarn::CDigest_Adler32> &&
              std::is_move_constructible_v<sarn::CDigest_CRC32> && std::is_move_assignable_v<sarn::CDigest_CRC32>);
static_assert(!std::is_copy_constructible_v<CDigestManager> && !std::is_move_constructible_v<CDigestManager> &&
              !std::is_copy_assignable_v<CDigestManager>);
static_assert(std::is_abstract_v<sarn::IDigest> && std::is_abstract_v<sarn::IDigestType>);
static_assert(std::is_convertible_v<sarn::CDigest_CRC32*, ul::IBase*>, "one virtual root");

} // namespace

TEST(DigestTypes, OfTheRegistry_HaveTheirSizesAndCreateDigestsOfTheirOwn) {
    const std::pair<const char*, int> types[] = {
        {"md4", 16},    {"md5", 16},  {"sha1", 20},     {"sha256", 32},
        {"adler32", 4}, {"crc32", 4}, {"md4-sha1", 36}, {"md4-sha1-adler32", 40}};
    for (const auto& [id, size] : types) {
        const ul::P<sarn::IDigestType> type = CDigestManager::get()->getType(id);
        EXPECT_EQ(type->getDigestSize(), size) << id;
        const ul::P<sarn::IDigest> digest = type->createDigest();
        EXPECT_EQ(digest->getDigestSize(), size) << id;
        EXPECT_EQ(digest->getType(), type) << "the digest's type is the one that created it";
    }
}

TEST(DigestTypes, UsedByEightThreads_CreateADigestForEach) {
    runOnThreads(8, [](int) {
        for (int round = 0; round < 500; ++round)
            EXPECT_EQ(toHex(getDigest("sha1", toBytes("abc"))), "a9993e364706816aba3e25717850c26c9cd0d89d");
    });
}

TEST(DigestTypes, RunningDigest_KeepsItsTypeAlive) {
    const ul::P<sarn::IDigest> digest = ul::make<sarn::CDigestType_MD4_SHA1>()->createDigest();
    EXPECT_EQ(digest->getType()->getDigestSize(), 36);
    feed(*digest, toBytes("abc"));
    EXPECT_EQ(finish(*digest), getDigest("md4-sha1", toBytes("abc")));
}

TEST(DigestTypes, CopiesAndMovedOnes_CreateTheSameDigestsAndOutliveTheirSource) {
    const auto expectSame = [](auto type, const char* id) {
        using Type = std::decay_t<decltype(*type)>;
        const ul::P<Type> copy = ul::make<Type>(*type);
        const ul::P<Type> moved = ul::make<Type>(std::move(*ul::make<Type>(*type)));
        const ul::P<Type> assigned = ul::make<Type>();
        *assigned = *type;
        *assigned = std::move(*ul::make<Type>(*type));
        type = nullptr;
        for (const ul::P<Type>& other : {copy, moved, assigned}) {
            EXPECT_EQ(other->getID(), id);
            const ul::P<sarn::IDigest> digest = other->createDigest();
            feed(*digest, makePattern(10));
            EXPECT_EQ(finish(*digest), getDigest(id, makePattern(10)));
        }
    };
    expectSame(ul::make<sarn::CDigestType_MD4_SHA1>(), "md4-sha1");
    expectSame(ul::make<sarn::CDigestType_MD4_SHA1_Adler32>(), "md4-sha1-adler32");
    expectSame(ul::make<sarn::CDigestType_SHA256>(), "sha256");
}

} // namespace sarn_test
