// SPDX-License-Identifier: Apache-2.0
// Mutexes and thread identifiers.
#include "support/expect.h"
#include "support/log_capture.h"

#include "ul/mutex.h"
#include "ul/pointer.h"
#include "ul/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <set>
#include <thread>

namespace sarn_test {

namespace {

/// Whether another thread gets the mutex within a moment. It waits on for it otherwise.
std::future<void> lockElsewhere(ul::CMutex& mutex) {
    return std::async(std::launch::async, [&mutex] { const ul::CMutexLock lock(mutex); });
}

bool isReady(std::future<void>& future, int milliseconds) {
    return future.wait_for(std::chrono::milliseconds(milliseconds)) == std::future_status::ready;
}

} // namespace

TEST(CMutex, LockedAgainByItsOwner_IsFreeAfterAsManyUnlocks) {
    ul::CMutex mutex;
    mutex.lock();
    mutex.lock();
    mutex.unlock();
    std::future<void> other = lockElsewhere(mutex);
    EXPECT_FALSE(isReady(other, 50)) << "one lock is left";
    mutex.unlock();
    EXPECT_TRUE(isReady(other, 10000));
}

TEST(CMutex, Unlock_ByAThreadThatDoesNotHoldIt_IsRefused) {
    ul::CMutex mutex;
    expectError("Mutex is not locked by the calling thread.", [&] { mutex.unlock(); });
    mutex.lock();
    std::thread([&] { expectError("Mutex is not locked by the calling thread.", [&] { mutex.unlock(); }); }).join();
    mutex.unlock();
    expectError("Mutex is not locked by the calling thread.", [&] { mutex.unlock(); });
}

TEST(CMutex, UnderContention_ExcludesEveryOtherThread) {
    ul::CMutex mutex;
    long long sum = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < 20000; ++round) {
                const ul::CMutexLock outer(mutex);
                const ul::CMutexLock inner(&mutex);
                ++sum;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(sum, 160000);
}

TEST(CMutex, HeldByAThreadThatEnded_IsNotHandedToAnother) {
    ul::CMutex mutex;
    std::thread([&] { mutex.lock(); }).join();
    // The system likes to give the same stack, and with it the same id, to the next thread.
    for (int i = 0; i < 20; ++i) {
        bool hasLocked = true;
        std::thread([&] { hasLocked = mutex.tryLock(); }).join();
        EXPECT_FALSE(hasLocked);
    }
}

TEST(CMutexLock, AroundAnException_Unlocks) {
    ul::CMutex mutex;
    try {
        const ul::CMutexLock lock(mutex);
        throw 1;
    } catch (int) {
    }
    std::future<void> other = lockElsewhere(mutex);
    EXPECT_TRUE(isReady(other, 10000));
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
    EXPECT_EQ(log.getLines(), std::vector<std::string>{"BUG: exception in the destructor of ul::CMutexLock ignored: "
                                                       "Mutex is not locked by the calling thread."});
}

TEST(CThread, IDs_AreNonZeroAndDifferBetweenLivingThreads) {
    constexpr int threadCount = 8;
    std::vector<std::uint64_t> ids(threadCount);
    std::atomic<int> arrived{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([&, i] {
            ids[static_cast<std::size_t>(i)] = ul::CThread::getCurrentID();
            for (++arrived; arrived < threadCount;)
                std::this_thread::yield();
        });
    for (std::thread& thread : threads)
        thread.join();
    std::set<std::uint64_t> different(ids.begin(), ids.end());
    different.insert(ul::CThread::getCurrentID());
    EXPECT_EQ(different.size(), 9U);
    EXPECT_EQ(different.count(0), 0U);
    EXPECT_EQ(ul::CThread::getCurrentID(), ul::CThread::getCurrentID());
}

TEST(CMutex, TryLock_OfOneThatAnotherThreadHolds_ReturnsFalseAtOnce) {
    ul::CMutex mutex;
    const ul::CMutexLock lock(mutex);
    bool hasLocked = true;
    std::thread([&] { hasLocked = mutex.tryLock(); }).join();
    EXPECT_FALSE(hasLocked);
}

TEST(CMutex, TryLock_ByItsHolder_CountsAsOneMoreLock) {
    ul::CMutex mutex;
    EXPECT_TRUE(mutex.tryLock());
    EXPECT_TRUE(mutex.tryLock());
    mutex.unlock();
    bool hasLocked = true;
    std::thread([&] { hasLocked = mutex.tryLock(); }).join();
    EXPECT_FALSE(hasLocked);
    mutex.unlock();
    std::thread([&] {
        hasLocked = mutex.tryLock();
        mutex.unlock();
    }).join();
    EXPECT_TRUE(hasLocked);
}

} // namespace sarn_test
