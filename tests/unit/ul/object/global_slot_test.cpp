// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"

#include "ul/global_slot.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace sarn_test {

namespace {

// Slots take plain functions, so what these do is kept here.
std::atomic<int> createCalls{0};
std::vector<int> destroyed;
ul::CSafeGlobalSlot* slotInUse = nullptr;

template <int Number>
void* create() {
    ++createCalls;
    return new int(Number);
}

void destroy(void* object) {
    auto* const number = static_cast<int*>(object);
    destroyed.push_back(*number);
    delete number;
}

class CSafeGlobalSlotTest : public testing::Test {
protected:
    CSafeGlobalSlotTest() {
        createCalls = 0;
        destroyed.clear();
    }
};

} // namespace

TEST_F(CSafeGlobalSlotTest, Use_CreatesOnceAndReturnsTheSameObject) {
    ul::CSafeGlobalSlot slot;
    void* const object = slot.use(create<7>, destroy);
    EXPECT_EQ(*static_cast<int*>(object), 7);
    EXPECT_EQ(slot.use(create<8>, destroy), object);
    EXPECT_EQ(createCalls, 1);
    slot.clear();
    EXPECT_EQ(destroyed, std::vector<int>{7});
}

TEST_F(CSafeGlobalSlotTest, Clear_LeavesAnEmptySlotThatMayBeUsedAgain) {
    ul::CSafeGlobalSlot slot;
    slot.clear();
    slot.use(create<1>, destroy);
    slot.clear();
    slot.clear();
    EXPECT_EQ(*static_cast<int*>(slot.use(create<2>, destroy)), 2);
    slot.clear();
    EXPECT_EQ(destroyed, (std::vector<int>{1, 2}));
}

TEST_F(CSafeGlobalSlotTest, UsedByManyThreadsAtOnce_CreatesOneObjectThatAllSee) {
    ul::CSafeGlobalSlot slot;
    std::atomic<int> arrived{0};
    std::vector<void*> seen(16);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < seen.size(); ++i)
        threads.emplace_back([&, i] {
            for (++arrived; arrived < 16;)
                std::this_thread::yield();
            seen[i] = slot.use(
                []() -> void* {
                    std::this_thread::sleep_for(std::chrono::milliseconds(20));
                    return create<3>();
                },
                destroy);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(createCalls, 1);
    EXPECT_EQ(seen, std::vector<void*>(16, seen.front()));
    slot.clear();
}

TEST_F(CSafeGlobalSlotTest, CreateThatThrows_LeavesTheSlotEmptyForTheNextTry) {
    ul::CSafeGlobalSlot slot;
    const auto createThrowing = []() -> void* { throw std::runtime_error("not now"); };
    EXPECT_THROW(slot.use(createThrowing, destroy), std::runtime_error);
    EXPECT_THROW(slot.use(createThrowing, destroy), std::runtime_error);
    EXPECT_EQ(*static_cast<int*>(slot.use(create<4>, destroy)), 4);
    slot.clear();
    EXPECT_EQ(destroyed, std::vector<int>{4});
}

TEST_F(CSafeGlobalSlotTest, CreateThatReturnsNull_IsAnErrorAndMayBeTriedAgain) {
    ul::CSafeGlobalSlot slot;
    expectError("Global object could not be created.", [&] { slot.use([]() -> void* { return nullptr; }, destroy); });
    EXPECT_EQ(*static_cast<int*>(slot.use(create<5>, destroy)), 5);
    slot.clear();
}

TEST_F(CSafeGlobalSlotTest, CreateThatComesBackToItsSlot_IsAnErrorInsteadOfADeadlock) {
    ul::CSafeGlobalSlot slot;
    slotInUse = &slot;
    const auto createAgain = []() -> void* { return slotInUse->use(create<1>, destroy); };
    expectError("Global object is used while it is being created.", [&] { slot.use(createAgain, destroy); });
    EXPECT_EQ(createCalls, 0);
}

TEST_F(CSafeGlobalSlotTest, CreateThatUsesAnotherSlot_Works) {
    static ul::CSafeGlobalSlot inner;
    ul::CSafeGlobalSlot outer;
    outer.use(
        []() -> void* {
            inner.use(create<1>, destroy);
            return create<2>();
        },
        destroy);
    EXPECT_EQ(createCalls, 2);
    outer.clear();
    inner.clear();
}

TEST_F(CSafeGlobalSlotTest, CreateOnAnotherThreadMeanwhile_IsNotHeldUp) {
    static ul::CSafeGlobalSlot other;
    ul::CSafeGlobalSlot slot;
    slot.use(
        []() -> void* {
            // Would wait for ever if one creation blocked all others.
            std::thread([] { other.use(create<1>, destroy); }).join();
            return create<2>();
        },
        destroy);
    EXPECT_EQ(createCalls, 2);
    slot.clear();
    other.clear();
}

TEST_F(CSafeGlobalSlotTest, ClearWithoutADestroyFunction_LeavesTheObjectToItsOwner) {
    static int object = 1;
    ul::CSafeGlobalSlot slot;
    slot.use([]() -> void* { return &object; }, nullptr);
    slot.clear();
    EXPECT_EQ(*static_cast<int*>(slot.use(create<2>, destroy)), 2);
    slot.clear();
    EXPECT_EQ(destroyed, std::vector<int>{2});
}

} // namespace sarn_test
