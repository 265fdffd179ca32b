// SPDX-License-Identifier: Apache-2.0
// Mutexes, thread identifiers, and slots for objects that all threads share.
#include "support/expect.h"
#include "support/log_capture.h"
#include "support/threads.h"

#include "ul/global_slot.h"
#include "ul/mutex.h"
#include "ul/thread.h"

namespace sarn_test {

namespace {

constexpr char notLocked[] = "Mutex is not locked by the calling thread.";

/// Whether another thread can lock the mutex.
bool isFree(ul::CMutex& mutex) {
    bool hasLocked = false;
    runOnThreads(1, [&](int) {
        hasLocked = mutex.tryLock();
        if (hasLocked)
            mutex.unlock();
    });
    return hasLocked;
}

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

TEST(CMutex, LockedAgainByItsOwner_IsFreeAfterAsManyUnlocks) {
    for (const bool isTried : {false, true}) {
        ul::CMutex mutex;
        for (int i = 0; i < 2; ++i) {
            if (isTried)
                EXPECT_TRUE(mutex.tryLock());
            else
                mutex.lock();
        }
        EXPECT_FALSE(isFree(mutex));
        mutex.unlock();
        EXPECT_FALSE(isFree(mutex)) << "one lock is left";
        mutex.unlock();
        EXPECT_TRUE(isFree(mutex));
    }
}

TEST(CMutex, Unlock_ByAThreadThatDoesNotHoldIt_IsRefused) {
    ul::CMutex mutex;
    const auto expectRefused = [&mutex](int) { expectError(notLocked, [&] { mutex.unlock(); }); };
    expectRefused(0);
    mutex.lock();
    runOnThreads(1, expectRefused);
    mutex.unlock();
    expectRefused(0);
}

TEST(CMutex, UnderContention_ExcludesEveryOtherThread) {
    ul::CMutex mutex;
    long long sum = 0;
    runOnThreads(8, [&](int) {
        for (int round = 0; round < 20000; ++round) {
            const ul::CMutexLock outer(mutex);
            const ul::CMutexLock inner(&mutex);
            ++sum;
        }
    });
    EXPECT_EQ(sum, 160000);
}

TEST(CMutex, HeldByAThreadThatEnded_IsNotFreeForAnother) {
    // Static, because it stays locked: the thread sanitizer would take the next mutex at its address for it.
    static ul::CMutex mutex;
    runOnThreads(1, [&](int) { mutex.lock(); });
    // The next thread often gets the same stack, and so the same identifier.
    for (int i = 0; i < 20; ++i)
        EXPECT_FALSE(isFree(mutex));
}

TEST(CMutexLock, AroundAnException_Unlocks) {
    ul::CMutex mutex;
    try {
        const ul::CMutexLock lock(mutex);
        throw 1;
    } catch (int) {
    }
    EXPECT_TRUE(isFree(mutex));
}

TEST(CMutexLock, OfNull_LocksNothing) {
    const ul::CMutexLock lock(static_cast<ul::IMutex*>(nullptr));
}

TEST(CMutexLock, WhoseUnlockFails_LogsTheFailure) {
    const LogCapture log;
    ul::CMutex mutex;
    {
        const ul::CMutexLock lock(mutex);
        mutex.unlock();
    }
    const std::string start = "BUG: exception in the destructor of ul::CMutexLock ignored: ";
    EXPECT_EQ(log.getLines(), std::vector<std::string>{start + notLocked});
}

TEST(CThread, IDs_AreNonZeroAndDifferBetweenLivingThreads) {
    std::vector<std::uint64_t> ids(8);
    std::atomic<int> missing{8};
    runOnThreads(8, [&](int number) {
        ids[static_cast<std::size_t>(number)] = ul::CThread::getCurrentID();
        for (--missing; missing > 0;)
            std::this_thread::yield();
    });
    ids.push_back(ul::CThread::getCurrentID());
    const std::set<std::uint64_t> different(ids.begin(), ids.end());
    EXPECT_EQ(different.size(), 9U);
    EXPECT_EQ(different.count(0), 0U);
    EXPECT_EQ(ul::CThread::getCurrentID(), ids.back());
}

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
