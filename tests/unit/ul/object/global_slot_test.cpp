// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/threads.h"

#include "ul/global_slot.h"

#include <atomic>
#include <stdexcept>

namespace sarn_test {

namespace {

// Slots take plain functions, so their effects are global.
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

struct CSafeGlobalSlotTest : testing::Test {
    CSafeGlobalSlotTest() {
        createCalls = 0;
        destroyed.clear();
    }
    ~CSafeGlobalSlotTest() override { slot.clear(); }

    void expectUse(void* (*createObject)(), int number) {
        EXPECT_EQ(*static_cast<int*>(slot.use(createObject, destroy)), number);
    }

    ul::CSafeGlobalSlot slot;
};

} // namespace

TEST_F(CSafeGlobalSlotTest, Use_CreatesOnceAndReturnsTheSameObject_UntilTheSlotIsCleared) {
    slot.clear();
    for (void* (*const createObject)() : {create<7>, create<8>}) {
        createCalls = 0;
        void* const object = slot.use(createObject, destroy);
        EXPECT_EQ(slot.use(create<9>, destroy), object);
        EXPECT_EQ(createCalls, 1);
        slot.clear();
        slot.clear();
    }
    EXPECT_EQ(destroyed, (std::vector<int>{7, 8}));
}

TEST_F(CSafeGlobalSlotTest, UsedByManyThreadsAtOnce_CreatesOneObjectThatAllSee) {
    static std::atomic<int> missing;
    missing = 16;
    std::vector<void*> seen(16);
    runOnThreads(16, [&](int number) {
        --missing;
        seen[static_cast<std::size_t>(number)] = slot.use(
            []() -> void* {
                // Waits until all threads have arrived.
                while (missing > 0)
                    std::this_thread::yield();
                return create<3>();
            },
            destroy);
    });
    EXPECT_EQ(createCalls, 1);
    EXPECT_EQ(seen, std::vector<void*>(16, seen.front()));
}

TEST_F(CSafeGlobalSlotTest, CreateThatThrowsOrReturnsNull_LeavesTheSlotEmptyForTheNextTry) {
    const auto createThrowing = []() -> void* { throw std::runtime_error("not now"); };
    for (int i = 0; i < 2; ++i) {
        EXPECT_THROW(slot.use(createThrowing, destroy), std::runtime_error);
        expectError("Global object could not be created.",
                    [&] { slot.use([]() -> void* { return nullptr; }, destroy); });
    }
    expectUse(create<4>, 4);
    slot.clear();
    EXPECT_EQ(destroyed, std::vector<int>{4});
}

TEST_F(CSafeGlobalSlotTest, CreateThatUsesItsOwnSlot_IsAnErrorInsteadOfADeadlock) {
    slotInUse = &slot;
    const auto createAgain = []() -> void* { return slotInUse->use(create<1>, destroy); };
    expectError("Global object is used while it is being created.", [&] { slot.use(createAgain, destroy); });
    EXPECT_EQ(createCalls, 0);
}

TEST_F(CSafeGlobalSlotTest, CreateThatUsesAnotherSlotOnAnyThread_IsNotBlocked) {
    static ul::CSafeGlobalSlot inner;
    static ul::CSafeGlobalSlot other;
    slot.use(
        []() -> void* {
            inner.use(create<1>, destroy);
            // If one creation blocked all others, this would never end.
            std::thread([] { other.use(create<1>, destroy); }).join();
            return create<2>();
        },
        destroy);
    EXPECT_EQ(createCalls, 3);
    inner.clear();
    other.clear();
}

TEST_F(CSafeGlobalSlotTest, ClearWithoutADestroyFunction_LeavesTheObjectToItsOwner) {
    static int object = 1;
    slot.use([]() -> void* { return &object; }, nullptr);
    slot.clear();
    expectUse(create<2>, 2);
    slot.clear();
    EXPECT_EQ(destroyed, std::vector<int>{2});
}

} // namespace sarn_test
