// SPDX-License-Identifier: Apache-2.0
#include "support/cipher_test_data.h"

#include <atomic>
#include <memory>
#include <thread>

namespace sarn_test {

namespace {

/// Counts its living objects.
class CountedCipher : public sarn::CCipher_Null {
public:
    explicit CountedCipher(int& living) : m_living(living) { ++m_living; }
    CountedCipher(const CountedCipher&) = delete;
    CountedCipher& operator=(const CountedCipher&) = delete;
    ~CountedCipher() override { --m_living; }

private:
    int& m_living;
};

class NamelessCipher : public sarn::CCipher_Null {
public:
    ul::String getID() override { throw ul::CBadStateError("no name"); }
};

struct ManagerAccess : sarn::CCipherManager {
    using sarn::CCipherManager::dispose;
    using sarn::CCipherManager::disposeGlobalInstance;
};

} // namespace

TEST(CCipherManager, FindCipher_OnAFreshRegistry_KnowsTheFiveBuiltInCiphers) {
    sarn::CCipherManager manager;
    for (const char* const id : {"aes256cbc", "aes128cbc", "bfcbc", "cast128cbc", "null"}) {
        const ul::P<sarn::ICipher> cipher = manager.findCipher(id);
        ASSERT_TRUE(cipher) << id;
        EXPECT_TRUE(cipher->getID() == id);
    }
}

TEST(CCipherManager, FindCipher_OfAnUnknownIdentifier_ReturnsNull) {
    sarn::CCipherManager manager;
    for (const char* const id : {"ideacbc", "AES256CBC", "", "aes256cbc ", "aes256"})
        EXPECT_FALSE(manager.findCipher(id)) << id;
}

TEST(CCipherManager, GetCipher_OfAnUnknownIdentifier_RaisesAnErrorThatNamesIt) {
    sarn::CCipherManager manager;
    expectError("Unknown cipher id 'ideacbc'.", [&] { manager.getCipher("ideacbc"); });
    expectError("Unknown cipher id ''.", [&] { manager.getCipher(""); });
}

TEST(CCipherManager, GetCipher_OfIdeaAfterTheHostRegisteredIt_ReturnsTheHostsObject) {
    if (!hasIDEA) {
        expectError("IDEA is not available in this OpenSSL.", [] { ul::make<sarn::CCipher_IDEACBC>(); });
        return;
    }
    sarn::CCipherManager manager;
    const auto idea = ul::make<sarn::CCipher_IDEACBC>();
    manager.addCipher(idea.get());
    EXPECT_EQ(manager.getCipher("ideacbc").get(), static_cast<sarn::ICipher*>(idea.get()));
}

TEST(CCipherManager, AddCipher_UnderAKnownIdentifier_ReplacesAndReleasesTheOldOne) {
    int living = 0;
    {
        sarn::CCipherManager manager;
        manager.addCipher(ul::make<CountedCipher>(living).get());
        EXPECT_EQ(living, 1);
        const auto second = ul::make<CountedCipher>(living);
        manager.addCipher(second.get());
        EXPECT_EQ(living, 1) << "the registry still holds the replaced cipher";
        EXPECT_EQ(manager.findCipher("null").get(), static_cast<sarn::ICipher*>(second.get()));
    }
    EXPECT_EQ(living, 0);
}

TEST(CCipherManager, AddCipher_WhoseGetIdThrows_LeavesTheRegistryUnchanged) {
    sarn::CCipherManager manager;
    const ul::P<sarn::ICipher> before = manager.findCipher("null");
    expectErrorOf<ul::CBadStateError>("no name", [&] { manager.addCipher(ul::make<NamelessCipher>().get()); });
    EXPECT_EQ(manager.findCipher("null"), before);
    EXPECT_FALSE(manager.findCipher(""));
}

TEST(CCipherManager, AddCipher_OfNull_IsRefused) {
    sarn::CCipherManager manager;
    expectInvalidArg("CCipherManager::addCipher", "cipher cannot be NULL", [&] { manager.addCipher(nullptr); });
}

TEST(CCipherManager, FoundCipher_OutlivesItsReplacement) {
    int living = 0;
    sarn::CCipherManager manager;
    manager.addCipher(ul::make<CountedCipher>(living).get());
    ul::P<sarn::ICipher> held = manager.findCipher("null");
    manager.addCipher(ul::make<sarn::CCipher_Null>().get());
    EXPECT_EQ(living, 1);
    EXPECT_TRUE(held->getID() == "null");
    held = nullptr;
    EXPECT_EQ(living, 0);
}

TEST(CCipherManager, AddCipher_ThatEndsACipherWhichUsesTheRegistry_DoesNotLockUp) {
    class ReentrantCipher : public sarn::CCipher_Null {
    public:
        explicit ReentrantCipher(sarn::CCipherManager& manager) : m_manager(manager) {}
        ~ReentrantCipher() override { m_manager.findCipher("aes256cbc"); }

    private:
        sarn::CCipherManager& m_manager;
    };
    sarn::CCipherManager manager;
    manager.addCipher(ul::make<ReentrantCipher>(manager).get());
    manager.addCipher(ul::make<sarn::CCipher_Null>().get());
    EXPECT_TRUE(manager.findCipher("null"));
}

TEST(CCipherManager, Dispose_OfCiphersThatUseTheRegistryAsTheyEnd_FindsItEmptyAndKeepsWhatTheyAdd) {
    class LastWishCipher : public sarn::CCipher_Null {
    public:
        LastWishCipher(sarn::CCipherManager& manager, int number, int& found)
            : m_manager(manager), m_number(number), m_found(found) {}
        LastWishCipher(const LastWishCipher&) = delete;
        LastWishCipher& operator=(const LastWishCipher&) = delete;
        ~LastWishCipher() override {
            m_found += m_manager.findCipher("aes256cbc") ? 1 : 0;
            m_manager.addCipher(ul::make<sarn::CCipher_Null>().get());
        }
        ul::String getID() override { return "wish " + ul::toString(m_number); }

    private:
        sarn::CCipherManager& m_manager;
        int m_number;
        int& m_found;
    };
    const auto manager = ul::make<sarn::CCipherManager>();
    int found = 0;
    for (int i = 0; i < 9; ++i)
        manager->addCipher(ul::make<LastWishCipher>(*manager, i, found).get());
    (manager.get()->*(&ManagerAccess::dispose))();
    EXPECT_EQ(found, 0);
    EXPECT_TRUE(manager->findCipher("null"));
    EXPECT_FALSE(manager->findCipher("wish 0"));
}

TEST(CCipherManager, Dispose_ReleasesEveryCipher) {
    int living = 0;
    const auto manager = ul::make<sarn::CCipherManager>();
    manager->addCipher(ul::make<CountedCipher>(living).get());
    (manager.get()->*(&ManagerAccess::dispose))();
    EXPECT_EQ(living, 0);
    EXPECT_FALSE(manager->findCipher("aes256cbc"));
    manager->addCipher(ul::make<CountedCipher>(living).get());
    EXPECT_TRUE(manager->findCipher("null"));
}

TEST(CCipherManager, Get_ReturnsTheSamePointerToTheSameObjectEachTime) {
    const ul::P<sarn::CCipherManager>& first = sarn::CCipherManager::get();
    const ul::P<sarn::CCipherManager>& second = sarn::CCipherManager::get();
    EXPECT_EQ(&first, &second);
    EXPECT_EQ(first.get(), second.get());
}

// The process-wide registry stays empty once it is disposed, so these run in processes of their own.
TEST(CCipherManagerDeathTest, DisposeGlobalInstance_BeforeAnyGet_LeavesAnEmptyRegistry) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            ManagerAccess::disposeGlobalInstance();
            std::exit(sarn::CCipherManager::get()->findCipher("aes256cbc") ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

TEST(CCipherManagerDeathTest, DisposeGlobalInstance_KeepsTheInstanceAndRegistersNothingAgain) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            sarn::CCipherManager* const before = sarn::CCipherManager::get().get();
            ManagerAccess::disposeGlobalInstance();
            const bool isSame = sarn::CCipherManager::get().get() == before;
            bool isUnknown = false;
            try {
                before->getCipher("aes256cbc");
            } catch (const ul::CError& error) {
                isUnknown = error.getMessage() == "Unknown cipher id 'aes256cbc'.";
            }
            before->addCipher(ul::make<sarn::CCipher_AES256CBC>().get());
            std::exit(isSame && isUnknown && before->findCipher("aes256cbc") ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

} // namespace sarn_test
