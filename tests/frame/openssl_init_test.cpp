// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/log_capture.h"

#include "sarn/openssl_init.h"

#include "ul/log.h"
#include "ul/thread.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>
#include <type_traits>

namespace sarn_test {

namespace {

using sarn::COpenSSLInit;

struct InitAccess : COpenSSLInit {
    using COpenSSLInit::disposeGlobalInstance;
};

struct CleanerAccess : COpenSSLInit::CCleaner {
    using CCleaner::disposeGlobalInstance;
    using CCleaner::isDisposed;
};

struct ThreadAccess : COpenSSLInit::CThreadStuff {
    using CThreadStuff::disposeGlobalInstance;
    using CThreadStuff::doLock;
    using CThreadStuff::isDisposed;
    using CThreadStuff::lockFunc;
    using CThreadStuff::threadIDFunc;
};

// libcrypto 1.0's callback types, to the letter.
static_assert(std::is_same_v<decltype(&ThreadAccess::lockFunc), void (*)(int, int, const char*, int)>);
static_assert(std::is_same_v<decltype(&ThreadAccess::threadIDFunc), unsigned long (*)()>);
#ifdef _WIN32
static_assert(sizeof(unsigned long) == 4, "a thread's id is a DWORD");
#endif

bool isCleanerDisposed() {
    return (COpenSSLInit::CCleaner::get().get()->*(&CleanerAccess::isDisposed))();
}

bool isThreadStuffDisposed() {
    return (COpenSSLInit::CThreadStuff::get().get()->*(&ThreadAccess::isDisposed))();
}

/// Whether another thread finds the mutex of `threads` free; it leaves it as it was.
bool isFree(ThreadAccess& threads) {
    std::atomic<bool> isTaken{false};
    std::atomic<bool> isDone{false};
    std::thread other([&] {
        threads.doLock(1, 0);
        isTaken = true;
        threads.doLock(2, 0);
        isDone = true;
    });
    for (int i = 0; i < 50 && !isDone; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    const bool wasFree = isTaken;
    if (!wasFree)
        threads.doLock(2, 0); // lets the other thread end; the caller locks again
    other.join();
    if (!wasFree)
        threads.doLock(1, 0);
    return wasFree;
}

} // namespace

TEST(COpenSSLInit, Get_ReturnsTheSamePointerEachTime) {
    EXPECT_EQ(&COpenSSLInit::get(), &COpenSSLInit::get());
    EXPECT_EQ(COpenSSLInit::CCleaner::get(), COpenSSLInit::CCleaner::get());
    EXPECT_EQ(COpenSSLInit::CThreadStuff::get(), COpenSSLInit::CThreadStuff::get());
}

TEST(COpenSSLInit, EnsureInitialized_CalledManyTimes_KeepsTheInstances) {
    COpenSSLInit::ensureInitialized();
    const auto* const cleaner = COpenSSLInit::CCleaner::get().get();
    const auto* const threads = COpenSSLInit::CThreadStuff::get().get();
    for (int i = 0; i < 100; ++i)
        COpenSSLInit::ensureInitialized();
    EXPECT_EQ(COpenSSLInit::CCleaner::get().get(), cleaner);
    EXPECT_EQ(COpenSSLInit::CThreadStuff::get().get(), threads);
}

TEST(COpenSSLInit, DisposeGlobalInstance_HasNoEffect) {
    const auto* const before = COpenSSLInit::get().get();
    InitAccess::disposeGlobalInstance();
    EXPECT_EQ(COpenSSLInit::get().get(), before);
    EXPECT_FALSE(isCleanerDisposed());
    EXPECT_FALSE(isThreadStuffDisposed());
}

TEST(COpenSSLInit, CopyAndMove_CarryNothing) {
    COpenSSLInit source;
    COpenSSLInit copy(source);
    COpenSSLInit moved(std::move(source));
    copy = moved;
    moved = COpenSSLInit();
    EXPECT_NE(static_cast<ul::CBase*>(&copy), static_cast<ul::CBase*>(&moved));
}

TEST(CCleaner, DisposeGlobalInstance_CalledTwice_StaysDisposedAndRaisesNothing) {
    EXPECT_FALSE(isCleanerDisposed());
    CleanerAccess::disposeGlobalInstance();
    EXPECT_TRUE(isCleanerDisposed());
    EXPECT_NO_THROW(CleanerAccess::disposeGlobalInstance());
    EXPECT_TRUE(isCleanerDisposed());
}

TEST(CCleaner, Copy_KeepsTheFlag) {
    CleanerAccess source;
    EXPECT_FALSE(CleanerAccess(source).isDisposed());
    source.dispose();
    EXPECT_TRUE(CleanerAccess(source).isDisposed());
}

TEST(CThreadStuff, DisposeGlobalInstance_OnlyMarksTheInstance_WhichStaysUsable) {
    ThreadAccess::disposeGlobalInstance();
    EXPECT_TRUE(isThreadStuffDisposed());
    EXPECT_NO_THROW(ThreadAccess::disposeGlobalInstance());
    const LogCapture log;
    ThreadAccess::lockFunc(1, 0, nullptr, 0);
    ThreadAccess::lockFunc(2, 0, nullptr, 0);
    EXPECT_TRUE(log.getLines().empty());
}

TEST(CThreadStuff, DoLock_LocksIfBit0IsSet_ElseUnlocks) {
    ThreadAccess threads;
    EXPECT_TRUE(isFree(threads));
    for (const int mode : {1, 5, 9, -1}) {
        threads.doLock(mode, 0);
        EXPECT_FALSE(isFree(threads)) << mode;
        threads.doLock(4, 0);
        EXPECT_TRUE(isFree(threads)) << mode;
    }
    threads.doLock(1, 0);
    threads.doLock(2, 0);
    EXPECT_TRUE(isFree(threads));
}

TEST(CThreadStuff, DoLock_WithABadIndex_LogsItAndLocksNothing) {
    ThreadAccess threads;
    const LogCapture log;
    threads.doLock(1, 1);
    threads.doLock(1, -1);
    EXPECT_THAT(log.getLines(),
                testing::ElementsAre(testing::HasSubstr("invalid openssl mutex index specified in openssl lock/unlock "
                                                        "func (mode: 1, n: 1)"),
                                     testing::HasSubstr("invalid openssl mutex index specified in openssl lock/unlock "
                                                        "func (mode: 1, n: -1)")));
    EXPECT_TRUE(isFree(threads));
}

TEST(CThreadStuff, DoLock_WhoseUnlockFails_LogsTheErrorAndReturns) {
    ThreadAccess threads;
    const LogCapture log;
    threads.doLock(2, 0);
    EXPECT_THAT(log.getLines(),
                testing::ElementsAre(testing::AllOf(
                    testing::HasSubstr("Error while trying to lock/unlock openssl mutex (mode: 2, n: 0)"),
                    testing::HasSubstr("Mutex is not locked by the calling thread."))));
}

TEST(CThreadStuff, DoLock_WhoseUnlockComesFromAnotherThread_LeavesTheMutexLocked) {
    ThreadAccess threads;
    const LogCapture log;
    threads.doLock(1, 0);
    std::thread([&] { threads.doLock(2, 0); }).join();
    EXPECT_EQ(log.getLines().size(), 1U);
    EXPECT_FALSE(isFree(threads));
    threads.doLock(2, 0);
}

TEST(CThreadStuff, Copy_SharesTheMutex) {
    ThreadAccess source;
    ThreadAccess copy(source);
    source.doLock(1, 0);
    EXPECT_FALSE(isFree(copy));
    copy.doLock(2, 0);
    EXPECT_TRUE(isFree(source));
}

TEST(CThreadStuff, ThreadIDFunc_IsTheCallersIdCutToUnsignedLong) {
    EXPECT_EQ(ThreadAccess::threadIDFunc(), static_cast<unsigned long>(ul::CThread::getCurrentID()));
    unsigned long other = 0;
    std::thread([&] { other = ThreadAccess::threadIDFunc(); }).join();
    EXPECT_NE(other, ThreadAccess::threadIDFunc());
}

TEST(CThreadStuffDeathTest, LockFunc_BeforeAnyOtherUse_CreatesTheInstanceAndLocksItsMutex) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const LogCapture log;
            ThreadAccess::lockFunc(1, 0, nullptr, 0);
            // Only a mutex that this thread holds can be unlocked without a line in the log.
            ThreadAccess::lockFunc(2, 0, nullptr, 0);
            const bool wasLocked = log.getLines().empty();
            ThreadAccess::lockFunc(2, 0, nullptr, 0);
            std::exit(wasLocked && log.getLines().size() == 1 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

} // namespace sarn_test
