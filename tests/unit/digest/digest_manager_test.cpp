// SPDX-License-Identifier: Apache-2.0
#include "support/digest_test_data.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <stdexcept>
#include <thread>
#include <type_traits>

namespace sarn_test {

namespace {

using sarn::CDigestManager;

struct ManagerAccess : CDigestManager {
    using CDigestManager::disposeGlobalInstance;
};

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

/// A type that a host might register.
class HostType : public sarn::CDigestType_SHA1 {
public:
    explicit HostType(const char* id, int& living) : m_id(id), m_living(living) { ++m_living; }
    HostType(const HostType&) = delete;
    HostType& operator=(const HostType&) = delete;
    ~HostType() override { --m_living; }
    ul::String getID() override {
        if (m_id.isEmpty())
            throw std::runtime_error("no name");
        return m_id;
    }

private:
    ul::String m_id;
    int& m_living;
};

/// A type that does something while the registry asks for its name.
class BusyType : public sarn::CDigestType_SHA1 {
public:
    explicit BusyType(std::function<void()> work) : m_work(std::move(work)) {}
    ul::String getID() override {
        if (const auto work = std::exchange(m_work, nullptr))
            work();
        return "busy";
    }

private:
    std::function<void()> m_work;
};

/// Whether `action` ends on another thread within `time`. It ends in any case before `pending` does.
bool isDoneWithin(std::chrono::milliseconds time, std::future<void>& pending, std::function<void()> action) {
    pending = std::async(std::launch::async, std::move(action));
    return pending.wait_for(time) == std::future_status::ready;
}

} // namespace

TEST(CDigestManager, LookUps_WaitWhileATypeIsAdded) {
    const ul::P<CDigestManager> manager = ul::make<CDigestManager>();
    std::future<void> finding;
    std::future<void> getting;
    manager->addType(ul::make<BusyType>([&] {
                         const std::chrono::milliseconds briefly(50);
                         EXPECT_FALSE(isDoneWithin(briefly, finding, [&] { manager->findType("md5"); }));
                         EXPECT_FALSE(isDoneWithin(briefly, getting, [&] { manager->getType("md5"); }));
                     }).get());
    finding.get();
    getting.get();
    EXPECT_TRUE(manager->findType("busy"));
}

TEST(CDigestManager, Dispose_TakesNoLock) {
    const ul::P<CDigestManager> manager = ul::make<CDigestManager>();
    std::future<void> disposing;
    manager->addType(ul::make<BusyType>([&] {
                         EXPECT_TRUE(isDoneWithin(std::chrono::minutes(1), disposing, [&] { manager->dispose(); }));
                     }).get());
    EXPECT_EQ(manager->findType("md5"), nullptr);
    EXPECT_TRUE(manager->findType("busy"));
}

TEST(CDigestManager, FreshRegistry_KnowsTheEightTypesAndTheirSizes) {
    const std::pair<const char*, int> types[] = {
        {"md4", 16},    {"md5", 16},  {"sha1", 20},     {"sha256", 32},
        {"adler32", 4}, {"crc32", 4}, {"md4-sha1", 36}, {"md4-sha1-adler32", 40}};
    for (const auto& [id, size] : types) {
        const ul::P<sarn::IDigestType> type = CDigestManager::get()->findType(id);
        ASSERT_TRUE(type) << id;
        EXPECT_TRUE(type->getID() == id);
        EXPECT_EQ(type->getDigestSize(), size);
        const ul::P<sarn::IDigest> digest = type->createDigest();
        EXPECT_EQ(digest->getDigestSize(), size);
        EXPECT_EQ(digest->getType(), type) << "the digest's type is the one that created it";
    }
}

TEST(CDigestManager, FindType_OfAnUnknownIdentifier_ReturnsNull) {
    for (const char* const id : {"MD5", "SHA1", "", "sha512", "md4-", "sha1-md4"})
        EXPECT_EQ(CDigestManager::get()->findType(id), nullptr) << id;
}

TEST(CDigestManager, GetType_OfAnUnknownIdentifier_RaisesAnErrorThatNamesIt) {
    CDigestManager& manager = *CDigestManager::get();
    expectError("Unknown digest type id 'MD5'.", [&] { manager.getType("MD5"); });
    expectError("Unknown digest type id ''.", [&] { manager.getType(""); });
    expectError("Unknown digest type id 'sha512'.", [&] { manager.getType("sha512"); });
}

TEST(CDigestManager, AddType_UnderAKnownIdentifier_ReplacesAndReleasesTheOldOne) {
    const ul::P<CDigestManager> manager = ul::make<CDigestManager>();
    int firstLiving = 0;
    int secondLiving = 0;
    manager->addType(ul::make<HostType>("sha1", firstLiving).get());
    EXPECT_EQ(firstLiving, 1);
    const ul::P<sarn::IDigestType> second = ul::make<HostType>("sha1", secondLiving);
    manager->addType(second.get());
    EXPECT_EQ(manager->getType("sha1"), second);
    EXPECT_EQ(firstLiving, 0);
    EXPECT_EQ(secondLiving, 1);
}

TEST(CDigestManager, AddType_WhoseGetIdThrows_LeavesTheRegistryUnchanged) {
    const ul::P<CDigestManager> manager = ul::make<CDigestManager>();
    int living = 0;
    EXPECT_THROW(manager->addType(ul::make<HostType>("", living).get()), std::runtime_error);
    EXPECT_EQ(living, 0);
    EXPECT_EQ(manager->findType(""), nullptr);
    EXPECT_TRUE(manager->findType("sha1"));
}

TEST(CDigestManager, AddType_OfNull_IsRefused) {
    expectInvalidArg("CDigestManager::addType", "type cannot be NULL", [] { CDigestManager::get()->addType(nullptr); });
}

TEST(CDigestManager, Dispose_ReleasesEveryTypeAndLeavesAnEmptyRegistry) {
    const ul::P<CDigestManager> manager = ul::make<CDigestManager>();
    int living = 0;
    manager->addType(ul::make<HostType>("own", living).get());
    manager->dispose();
    EXPECT_EQ(living, 0);
    EXPECT_EQ(manager->findType("md5"), nullptr);
    expectError("Unknown digest type id 'md5'.", [&] { manager->getType("md5"); });
    manager->addType(ul::make<sarn::CDigestType_MD5>().get());
    EXPECT_TRUE(manager->findType("md5"));
}

TEST(CDigestManager, Get_ReturnsTheSamePointerToTheSameObjectEachTime) {
    EXPECT_EQ(&CDigestManager::get(), &CDigestManager::get());
    EXPECT_EQ(CDigestManager::get().get(), CDigestManager::get().get());
}

TEST(CDigestManager, UsedByEightThreads_NeverLosesAType) {
    const ul::P<CDigestManager> manager = ul::make<CDigestManager>();
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&, i] {
            for (int round = 0; round < 500; ++round) {
                if (i == 0)
                    manager->addType(ul::make<sarn::CDigestType_SHA1>().get());
                const ul::P<sarn::IDigest> digest = manager->getType("sha1")->createDigest();
                digest->update("abc", 3);
                if (toHex(finish(*digest)) != "a9993e364706816aba3e25717850c26c9cd0d89d")
                    ++wrong;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(CDigestManagerDeathTest, DisposeGlobalInstance_BeforeAnyGet_LeavesAnEmptyRegistry) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            ManagerAccess::disposeGlobalInstance();
            std::exit(CDigestManager::get()->findType("md5") ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

TEST(DigestType, Copy_CreatesTheSameDigestsAndOutlivesItsSource) {
    ul::P<sarn::CDigestType_MD4_SHA1_Adler32> source = ul::make<sarn::CDigestType_MD4_SHA1_Adler32>();
    const ul::P<sarn::CDigestType_MD4_SHA1_Adler32> copy = ul::make<sarn::CDigestType_MD4_SHA1_Adler32>(*source);
    source = nullptr;
    const ul::P<sarn::IDigest> digest = copy->createDigest();
    digest->update("abc", 3);
    EXPECT_EQ(finish(*digest), getDigest("md4-sha1-adler32", {'a', 'b', 'c'}));
}

TEST(DigestType, RunningDigest_KeepsItsTypeAlive) {
    const ul::P<sarn::IDigest> digest = ul::make<sarn::CDigestType_MD4_SHA1>()->createDigest();
    EXPECT_EQ(digest->getType()->getDigestSize(), 36);
    digest->update("abc", 3);
    EXPECT_EQ(finish(*digest), getDigest("md4-sha1", {'a', 'b', 'c'}));
}

TEST(DigestTypes, CopiesAndMovedOnes_CreateTheSameDigests) {
    const auto expectSame = [](auto& type, const char* id) {
        using Type = std::decay_t<decltype(type)>;
        const ul::P<Type> copy = ul::make<Type>(type);
        const ul::P<Type> moved = ul::make<Type>(std::move(*ul::make<Type>(type)));
        const ul::P<Type> assigned = ul::make<Type>();
        *assigned = type;
        *assigned = std::move(*ul::make<Type>(type));
        for (const ul::P<Type>& other : {copy, moved, assigned}) {
            EXPECT_TRUE(other->getID() == id);
            const ul::P<sarn::IDigest> digest = other->createDigest();
            feed(*digest, makePattern(10));
            EXPECT_EQ(finish(*digest), getDigest(id, makePattern(10)));
        }
    };
    expectSame(*ul::make<sarn::CDigestType_MD4_SHA1>(), "md4-sha1");
    expectSame(*ul::make<sarn::CDigestType_MD4_SHA1_Adler32>(), "md4-sha1-adler32");
    expectSame(*ul::make<sarn::CDigestType_SHA256>(), "sha256");
}

} // namespace sarn_test
