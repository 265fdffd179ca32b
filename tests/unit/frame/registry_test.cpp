// SPDX-License-Identifier: Apache-2.0
// The common behaviour of the registries of ciphers and of digest types.
#include "support/new_process.h"
#include "support/registries.h"

#include <thread>

namespace sarn_test {

namespace {

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

template <class Family>
struct RegistryDeathTest : Registry<Family> {};

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
