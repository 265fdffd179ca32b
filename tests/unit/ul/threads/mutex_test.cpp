// SPDX-License-Identifier: Apache-2.0
// Mutexes and thread identifiers.
#include "support/expect.h"
#include "support/log_capture.h"
#include "support/threads.h"

#include "ul/mutex.h"
#include "ul/thread.h"

#include <atomic>

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

} // namespace sarn_test
