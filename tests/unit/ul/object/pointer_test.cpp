// SPDX-License-Identifier: Apache-2.0
#include "support/threads.h"

#include "ul/pointer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

class IFirst : public virtual ul::IBase {
public:
    virtual int getFirst() const = 0;
};

class ISecond : public virtual ul::IBase {};

/// Counts its living objects.
class Object : public ul::CBase, public virtual IFirst, public virtual ISecond {
public:
    explicit Object(int value = 0) : m_value(value) { ++living; }
    Object(const Object& other) : ul::CBase(other), m_value(other.m_value) { ++living; }
    Object& operator=(const Object&) = default;
    ~Object() override { --living; }
    int getFirst() const override { return m_value; }

    static inline int living = 0;

private:
    int m_value;
};

static_assert(std::is_abstract_v<ul::IBase> && std::has_virtual_destructor_v<ul::IBase>);
static_assert(std::is_nothrow_move_constructible_v<ul::P<Object>>);
static_assert(std::is_convertible_v<ul::P<Object>, ul::P<IFirst>>);
static_assert(std::is_nothrow_constructible_v<ul::P<IFirst>, ul::P<Object>&&>);
static_assert(std::is_convertible_v<ul::P<Object>, ul::PC<ul::IBase>>);
static_assert(!std::is_convertible_v<ul::P<IFirst>, ul::P<Object>>);
static_assert(!std::is_convertible_v<ul::PC<Object>, ul::P<Object>>);

} // namespace

TEST(P, Make_GivesTheOnlyReference_AndAConstructorFromARawPointerAddsOne) {
    Object* const raw = new (ul::CBase::RawNew{}) Object;
    {
        const ul::P<Object> object = ul::make<Object>(7);
        const ul::P<Object> another(raw);
        EXPECT_EQ(object->getFirst(), 7);
        EXPECT_EQ(another.get(), raw);
        EXPECT_EQ(Object::living, 2);
    }
    EXPECT_EQ(Object::living, 1) << "the creator's reference is left";
    raw->release();
    EXPECT_EQ(Object::living, 0);
}

TEST(P, CopiesOfEveryKind_KeepTheObjectUntilTheLastOneIsGone) {
    ul::P<ul::IBase> last;
    {
        const ul::P<Object> object = ul::make<Object>();
        const ul::P<IFirst> first = object;
        const ul::P<ISecond> second(object);
        const ul::PC<IFirst> constant = first;
        EXPECT_EQ(first, constant);
        EXPECT_EQ(constant->getFirst(), 0);
        last = second;
    }
    EXPECT_EQ(Object::living, 1);
    last = nullptr;
    EXPECT_EQ(Object::living, 0);
}

TEST(P, Move_TransfersTheReference_AlsoToAnotherType) {
    ul::P<Object> from = ul::make<Object>(7);
    Object* const raw = from.get();
    ul::P<Object> to = std::move(from);
    EXPECT_EQ(to.get(), raw);
    EXPECT_EQ(from, nullptr); // NOLINT(bugprone-use-after-move): the purpose of the test
    const ul::P<IFirst> interface = std::move(to);
    EXPECT_FALSE(to); // NOLINT(bugprone-use-after-move): see above
    EXPECT_EQ(interface->getFirst(), 7);
    EXPECT_FALSE(ul::P<IFirst>(ul::P<Object>()));
    EXPECT_EQ(Object::living, 1);
}

TEST(P, Assignment_ToItself_KeepsTheObject) {
    ul::P<Object> object = ul::make<Object>(3);
    const ul::P<Object>& same = object;
    object = same;
    EXPECT_EQ(object->getFirst(), 3);
    EXPECT_EQ(Object::living, 1);
}

TEST(P, Null_IsFalseAndEqualToNullptr) {
    const ul::P<Object> none;
    const ul::P<Object> alsoNone = nullptr;
    EXPECT_FALSE(none);
    EXPECT_TRUE(none == nullptr && nullptr == alsoNone && none == alsoNone);
    const ul::P<Object> some = ul::make<Object>();
    EXPECT_TRUE(some && some != nullptr && nullptr != some && some != none);
    EXPECT_EQ(ul::P<IFirst>(none), nullptr);
}

TEST(P, Make_WhenTheConstructorThrows_FreesTheMemory) {
    struct Throwing : Object {
        Throwing() { throw std::runtime_error("no"); }
    };
    // The leak checkers look for the memory.
    EXPECT_THROW(ul::make<Throwing>(), std::runtime_error);
    EXPECT_EQ(Object::living, 0);
}

TEST(CBase, Copy_HasItsOwnCount) {
    const ul::P<Object> original = ul::make<Object>(5);
    const ul::P<Object> alsoOriginal = original;
    ul::P<Object> copy = ul::make<Object>(*original);
    EXPECT_EQ(Object::living, 2);
    *copy = *original;
    copy = nullptr;
    EXPECT_EQ(Object::living, 1) << "the copy had one reference";
}

TEST(CBase, Release_OfTheLastReference_CallsDeleteThisOnce) {
    struct Kept : ul::CBase {
        void deleteThis() override { ++deleteCalls; }
        int deleteCalls = 0;
    };
    Kept kept;
    kept.addRef();
    kept.release();
    EXPECT_EQ(kept.deleteCalls, 0);
    kept.release();
    EXPECT_EQ(kept.deleteCalls, 1);
}

TEST(CBase, CheckCastAllowed_AllowsEveryCast) {
    const Object object;
    object.checkCastAllowed(typeid(IFirst));
    object.checkCastAllowed(typeid(int));
}

TEST(CBase, References_CountedByTwoThreads_AreNotLost) {
    const ul::P<Object> object = ul::make<Object>();
    sarn_test::runOnThreads(2, [&object](int) {
        for (int i = 0; i < 100000; ++i)
            const ul::P<IFirst> copy = object;
    });
    EXPECT_EQ(Object::living, 1);
    object->addRef();
    object->release();
    EXPECT_EQ(Object::living, 1);
}

TEST(CBase, LastTwoReferences_ReleasedByTwoThreadsAtOnce_DestroyTheObjectOnce) {
    constexpr std::size_t count = 20000;
    std::vector<ul::P<Object>> references[2];
    for (std::size_t i = 0; i < count; ++i)
        references[1].push_back(references[0].emplace_back(ul::make<Object>()));
    std::atomic<std::size_t> reached[2] = {};
    sarn_test::runOnThreads(2, [&](int number) {
        for (std::size_t i = 0; i < count; ++i) {
            reached[number] = i + 1;
            int spins = 0;
            for (; reached[1 - number] <= i; ++spins) {
                if (spins > 1000)
                    std::this_thread::yield();
            }
            // The thread that arrived first notices the other a little later. Different delays make the two meet.
            for (std::atomic<std::size_t> delay{spins == 0 ? i % 64 : 0}; delay > 0;)
                --delay;
            references[number][i] = nullptr;
        }
    });
    EXPECT_EQ(Object::living, 0);
}
