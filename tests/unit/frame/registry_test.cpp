// SPDX-License-Identifier: Apache-2.0
// The common behaviour of the registries of ciphers and of digest types.
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"
#include "support/new_process.h"
#include "support/threads.h"

#include <chrono>
#include <functional>
#include <stdexcept>

namespace sarn_test {

namespace {

/// The registry of ciphers. A host may replace the item `hostID` by an object of `Base`.
struct Ciphers : sarn::CCipherManager {
    using Manager = sarn::CCipherManager;
    using Item = sarn::ICipher;
    using Base = sarn::CCipher_Null;
    static constexpr const char* hostID = "null";
    static constexpr const char* builtIn[] = {"aes256cbc", "aes128cbc", "bfcbc", "cast128cbc", "null"};
    static constexpr const char* unknown[] = {"ideacbc", "AES256CBC", "", "aes256cbc ", "aes256"};
    static constexpr const char* unknownText = "Unknown cipher id '";
    static constexpr const char* nullRefusal[] = {"CCipherManager::addCipher", "cipher cannot be NULL"};
    static constexpr auto addItem = &Manager::addCipher;
    static constexpr auto findItem = &Manager::findCipher;
    static constexpr auto getItem = &Manager::getCipher;
    using Manager::dispose;
    using Manager::disposeGlobalInstance;
};

struct DigestTypes : sarn::CDigestManager {
    using Manager = sarn::CDigestManager;
    using Item = sarn::IDigestType;
    using Base = sarn::CDigestType_SHA1;
    static constexpr const char* hostID = "sha1";
    static constexpr auto& builtIn = digestIDs;
    static constexpr const char* unknown[] = {"MD5", "SHA1", "", "sha512", "md4-", "sha1-md4"};
    static constexpr const char* unknownText = "Unknown digest type id '";
    static constexpr const char* nullRefusal[] = {"CDigestManager::addType", "type cannot be NULL"};
    static constexpr auto addItem = &Manager::addType;
    static constexpr auto findItem = &Manager::findType;
    static constexpr auto getItem = &Manager::getType;
    using Manager::dispose;
    using Manager::disposeGlobalInstance;
};

/// An item of a host, with actions for its name and its end.
template <class Family>
struct HostItem : Family::Base {
    explicit HostItem(
        std::function<ul::String()> name, std::function<void()> end = [] {})
        : getName(std::move(name)), atEnd(std::move(end)) {}
    HostItem(const HostItem&) = delete;
    HostItem& operator=(const HostItem&) = delete;
    ~HostItem() override { atEnd(); }
    ul::String getID() override { return getName(); }

    std::function<ul::String()> getName;
    std::function<void()> atEnd;
};

template <class Family>
struct Registry : testing::Test {
    using Host = HostItem<Family>;
    using P = ul::P<typename Family::Item>;

    void add(typename Family::Item* item) { (*manager.*Family::addItem)(item); }
    void add(const ul::P<Host>& item) { add(item.get()); }
    P find(const ul::String& id) { return (*manager.*Family::findItem)(id); }
    void expectUnknown(const ul::String& id) {
        EXPECT_FALSE(find(id));
        expectError((Family::unknownText + id.toUTF8() + "'.").c_str(), [&] { (*manager.*Family::getItem)(id); });
    }

    /// An item called `hostID` that is counted while it lives.
    ul::P<Host> makeCounted() {
        ++living;
        return ul::make<Host>([] { return Family::hostID; }, [this] { --living; });
    }

    int living = 0;
    const ul::P<Family> manager = ul::make<Family>();
};

struct FamilyNames {
    template <class Family>
    static std::string GetName(int) {
        return std::is_same_v<Family, Ciphers> ? "Ciphers" : "DigestTypes";
    }
};

template <class Family>
struct RegistryDeathTest : Registry<Family> {};

using Families = testing::Types<Ciphers, DigestTypes>;
TYPED_TEST_SUITE(Registry, Families, FamilyNames);
TYPED_TEST_SUITE(RegistryDeathTest, Families, FamilyNames);

} // namespace

TYPED_TEST(Registry, Fresh_KnowsItsBuiltInItems) {
    for (const char* const id : TypeParam::builtIn) {
        const auto item = this->find(id);
        ASSERT_TRUE(item) << id;
        EXPECT_EQ(item->getID(), id);
    }
}

TYPED_TEST(Registry, UnknownIdentifier_IsNotFoundAndNamedInTheErrorOfGet) {
    for (const char* const id : TypeParam::unknown)
        this->expectUnknown(id);
}

TYPED_TEST(Registry, Add_UnderAKnownIdentifier_ReplacesAndReleasesTheOldOne) {
    this->add(this->makeCounted());
    EXPECT_EQ(this->living, 1);
    const auto second = this->makeCounted();
    this->add(second);
    EXPECT_EQ(this->living, 1) << "the registry still holds the replaced item";
    EXPECT_EQ(this->find(TypeParam::hostID).get(), static_cast<typename TypeParam::Item*>(second.get()));
}

TYPED_TEST(Registry, Add_WhoseGetIdThrows_LeavesTheRegistryUnchanged) {
    const auto before = this->find(TypeParam::hostID);
    const auto nameless = ul::make<HostItem<TypeParam>>([]() -> ul::String { throw ul::CBadStateError("no name"); });
    expectErrorOf<ul::CBadStateError>("no name", [&] { this->add(nameless); });
    EXPECT_EQ(this->find(TypeParam::hostID), before);
    EXPECT_FALSE(this->find(""));
}

TYPED_TEST(Registry, Add_OfNull_IsRefused) {
    expectInvalidArg(TypeParam::nullRefusal[0], TypeParam::nullRefusal[1], [&] { this->add(nullptr); });
}

TYPED_TEST(Registry, FoundItem_OutlivesItsReplacement) {
    this->add(this->makeCounted());
    auto held = this->find(TypeParam::hostID);
    this->add(ul::make<typename TypeParam::Base>().get());
    EXPECT_EQ(this->living, 1);
    EXPECT_EQ(held->getID(), TypeParam::hostID);
    held = nullptr;
    EXPECT_EQ(this->living, 0);
}

TYPED_TEST(Registry, Add_ThatDestroysAnItemWhichUsesTheRegistry_DoesNotDeadlock) {
    this->add(ul::make<HostItem<TypeParam>>([] { return TypeParam::hostID; }, [this] { this->find("x"); }));
    this->add(ul::make<typename TypeParam::Base>().get());
    EXPECT_TRUE(this->find(TypeParam::hostID));
}

TYPED_TEST(Registry, Dispose_OfItemsWhoseDestructorsUseTheRegistry_ShowsItEmptyAndKeepsItemsThatTheyAdd) {
    int found = 0;
    for (int i = 0; i < 9; ++i)
        this->add(ul::make<HostItem<TypeParam>>([i] { return "wish " + ul::toString(i); },
                                                [&] {
                                                    found += this->find(TypeParam::builtIn[0]) ? 1 : 0;
                                                    this->add(ul::make<typename TypeParam::Base>().get());
                                                }));
    this->manager->dispose();
    EXPECT_EQ(found, 0);
    EXPECT_TRUE(this->find(TypeParam::hostID));
    EXPECT_FALSE(this->find("wish 0"));
}

TYPED_TEST(Registry, Dispose_ReleasesEveryItemAndLeavesAnEmptyRegistryThatTakesOthers) {
    this->add(this->makeCounted());
    this->manager->dispose();
    EXPECT_EQ(this->living, 0);
    for (const char* const id : TypeParam::builtIn)
        this->expectUnknown(id);
    this->add(ul::make<typename TypeParam::Base>().get());
    EXPECT_TRUE(this->find(TypeParam::hostID));
}

TYPED_TEST(Registry, Get_ReturnsTheSamePointerToTheSameObjectEachTime) {
    EXPECT_EQ(&TypeParam::get(), &TypeParam::get());
    EXPECT_EQ(TypeParam::get().get(), TypeParam::get().get());
}

TYPED_TEST(Registry, UsedByEightThreads_NeverLosesAnItem) {
    runOnThreads(8, [this](int) {
        for (int i = 0; i < 500; ++i) {
            this->add(ul::make<typename TypeParam::Base>().get());
            EXPECT_TRUE(this->find(TypeParam::hostID));
            EXPECT_EQ(((*this->manager).*TypeParam::getItem)(TypeParam::builtIn[1])->getID(), TypeParam::builtIn[1]);
        }
    });
}

TYPED_TEST(Registry, LookUps_WhileAnItemIsAdded_WaitForIt) {
    std::thread finding;
    std::thread getting;
    this->add(ul::make<HostItem<TypeParam>>([&] {
        finding = std::thread([this] { EXPECT_TRUE(this->find("asked")); });
        getting = std::thread([this] { EXPECT_NO_THROW(((*this->manager).*TypeParam::getItem)("asked")); });
        // Time for the threads to make a mistake: too little of it can hide one but never fails the test.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return "asked";
    }));
    finding.join();
    getting.join();
}

TYPED_TEST(Registry, Dispose_WhileAnItemIsAdded_DoesNotWaitForIt) {
    this->add(ul::make<HostItem<TypeParam>>([this] {
        // If it waited for the item, this would never end.
        std::thread([this] { this->manager->dispose(); }).join();
        return "asked";
    }));
    EXPECT_FALSE(this->find(TypeParam::hostID));
    EXPECT_TRUE(this->find("asked"));
}

// A disposed process-wide registry stays empty, so each of these tests needs a new process.
TYPED_TEST(RegistryDeathTest, DisposeGlobalInstance_BeforeAnyGet_LeavesAnEmptyRegistry) {
    expectInNewProcess([] {
        TypeParam::disposeGlobalInstance();
        EXPECT_FALSE(((*TypeParam::get()).*TypeParam::findItem)(TypeParam::builtIn[0]));
    });
}

TYPED_TEST(RegistryDeathTest, DisposeGlobalInstance_KeepsTheInstanceAndRegistersNothingAgain) {
    expectInNewProcess([] {
        auto* const before = TypeParam::get().get();
        TypeParam::disposeGlobalInstance();
        EXPECT_EQ(TypeParam::get().get(), before);
        EXPECT_FALSE((before->*TypeParam::findItem)(TypeParam::hostID));
        (before->*TypeParam::addItem)(ul::make<typename TypeParam::Base>().get());
        EXPECT_TRUE((before->*TypeParam::findItem)(TypeParam::hostID));
    });
}

} // namespace sarn_test
