// SPDX-License-Identifier: Apache-2.0
// The initialisation of libcrypto, and versions.
#include "support/expect.h"
#include "support/log_capture.h"
#include "support/new_process.h"
#include "support/threads.h"

#include "sarn/openssl_init.h"
#include "sarn/version.h"

#include "ul/thread.h"

#include <gmock/gmock.h>
#include <openssl/crypto.h>

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

// The callback types of libcrypto 1.0.
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

/// Unlocks the mutex of `threads` once. Returns false if this thread did not hold it, which is logged.
bool unlocks(ThreadAccess& threads) {
    const LogCapture log;
    threads.doLock(2, 0);
    return log.getLines().empty();
}

/// Expects that two calls of `dispose` dispose of these companions and raise nothing.
void expectDisposal(void (*dispose)(), bool ofCleaner, bool ofThreadStuff) {
    const auto* const before = COpenSSLInit::get().get();
    EXPECT_FALSE(isCleanerDisposed() || isThreadStuffDisposed());
    for (int i = 0; i < 2; ++i) {
        EXPECT_NO_THROW(dispose());
        EXPECT_EQ(isCleanerDisposed(), ofCleaner);
        EXPECT_EQ(isThreadStuffDisposed(), ofThreadStuff);
    }
    EXPECT_EQ(COpenSSLInit::get().get(), before);
}

} // namespace

TEST(COpenSSLInit, GetAndEnsureInitialized_CalledManyTimes_KeepTheInstances) {
    const auto* const init = COpenSSLInit::get().get();
    const auto* const cleaner = COpenSSLInit::CCleaner::get().get();
    const auto* const threads = COpenSSLInit::CThreadStuff::get().get();
    for (int i = 0; i < 100; ++i)
        COpenSSLInit::ensureInitialized();
    EXPECT_EQ(COpenSSLInit::get().get(), init);
    EXPECT_EQ(COpenSSLInit::CCleaner::get().get(), cleaner);
    EXPECT_EQ(COpenSSLInit::CThreadStuff::get().get(), threads);
    EXPECT_EQ(&COpenSSLInit::get(), &COpenSSLInit::get());
}

TEST(CCleaner, Copy_KeepsTheFlag) {
    CleanerAccess source;
    EXPECT_FALSE(CleanerAccess(source).isDisposed());
    source.dispose();
    EXPECT_TRUE(CleanerAccess(source).isDisposed());
}

TEST(CThreadStuff, DoLock_LocksIfBit0IsSet_ElseUnlocks) {
    ThreadAccess threads;
    for (const int mode : {1, 5, 9, -1}) {
        threads.doLock(mode, 0);
        EXPECT_TRUE(unlocks(threads)) << mode;
        EXPECT_FALSE(unlocks(threads)) << mode;
    }
    const LogCapture log;
    for (const int mode : {4, 2, 0, -2}) {
        threads.doLock(1, 0);
        threads.doLock(mode, 0);
    }
    EXPECT_TRUE(log.getLines().empty());
    EXPECT_FALSE(unlocks(threads));
}

TEST(CThreadStuff, DoLock_WithABadIndex_LogsItAndLocksNothing) {
    ThreadAccess threads;
    {
        const LogCapture log;
        threads.doLock(1, 1);
        threads.doLock(1, -1);
        threads.doLock(INT_MIN, INT_MAX);
        const std::string start = "ERROR: invalid openssl mutex index specified in openssl lock/unlock func ";
        EXPECT_THAT(log.getLines(), testing::ElementsAre(start + "(mode: 1, n: 1)", start + "(mode: 1, n: -1)",
                                                         start + "(mode: -2147483648, n: 2147483647)"));
    }
    EXPECT_FALSE(unlocks(threads));
}

TEST(CThreadStuff, DoLock_WhoseUnlockComesFromAnotherThread_LogsTheErrorAndLeavesTheMutexLocked) {
    ThreadAccess threads;
    threads.doLock(1, 0);
    {
        const LogCapture log;
        runOnThreads(1, [&](int) { threads.doLock(2, 0); });
        EXPECT_THAT(log.getLines(),
                    testing::ElementsAre("ERROR: Error while trying to lock/unlock openssl mutex (mode: 2, n: 0): "
                                         "Mutex is not locked by the calling thread."));
    }
    EXPECT_TRUE(unlocks(threads));
}

TEST(CThreadStuff, Copy_SharesTheMutex) {
    ThreadAccess source;
    ThreadAccess copy(source);
    ThreadAccess assigned;
    assigned = source;
    source.doLock(1, 0);
    EXPECT_TRUE(unlocks(copy));
    source.doLock(1, 0);
    EXPECT_TRUE(unlocks(assigned));
    EXPECT_FALSE(unlocks(source));
}

TEST(CThreadStuff, ThreadIDFunc_IsTheCallersIdCutToUnsignedLong) {
    EXPECT_EQ(ThreadAccess::threadIDFunc(), static_cast<unsigned long>(ul::CThread::getCurrentID()));
    unsigned long other = 0;
    std::thread([&] { other = ThreadAccess::threadIDFunc(); }).join();
    EXPECT_NE(other, ThreadAccess::threadIDFunc());
}

TEST(Version, OfTheLoadedLibraries_IsTheOneOfTheHeadersAndTheProject) {
    EXPECT_EQ(SARN_VERSION, sarn::getVersion());
    EXPECT_EQ(UL_VERSION, ul::getVersion());
    EXPECT_STREQ(SARN_PROJECT_VERSION, sarn::getVersionText());
    EXPECT_STREQ(SARN_PROJECT_VERSION, ul::getVersionText());
    const int number = sarn::getVersion();
    EXPECT_EQ(std::to_string(number / 10000) + "." + std::to_string(number / 100 % 100) + "." +
                  std::to_string(number % 100),
              sarn::getVersionText());
}

TEST(Version, OfLibcrypto_IsTheOneOfTheLoadedLibrary) {
    EXPECT_EQ(OpenSSL_version_num(), sarn::getLibcryptoVersion());
    EXPECT_STREQ(OpenSSL_version(OPENSSL_VERSION), sarn::getLibcryptoVersionText());
    EXPECT_EQ(std::string("OpenSSL "), std::string(sarn::getLibcryptoVersionText()).substr(0, 8));
}

// Disposed objects remain disposed, and objects are never destroyed: each of these tests needs a new process.

TEST(COpenSSLInitDeathTest, DisposeGlobalInstance_HasNoEffect) {
    expectInNewProcess([] { expectDisposal(InitAccess::disposeGlobalInstance, false, false); });
}

TEST(CCleanerDeathTest, DisposeGlobalInstance_CalledTwice_StaysDisposedAndRaisesNothing) {
    expectInNewProcess([] { expectDisposal(CleanerAccess::disposeGlobalInstance, true, false); });
}

TEST(CThreadStuffDeathTest, DisposeGlobalInstance_OnlyMarksTheInstance_WhichStaysUsable) {
    expectInNewProcess([] {
        expectDisposal(ThreadAccess::disposeGlobalInstance, false, true);
        const LogCapture log;
        ThreadAccess::lockFunc(1, 0, nullptr, 0);
        ThreadAccess::lockFunc(2, 0, nullptr, 0);
        EXPECT_TRUE(log.getLines().empty());
    });
}

TEST(CThreadStuffDeathTest, LockFunc_BeforeAnyOtherUse_CreatesTheInstanceAndLocksItsMutex) {
    expectInNewProcess([] {
        const LogCapture log;
        ThreadAccess::lockFunc(1, 0, nullptr, 0);
        // A line is logged if this thread does not hold the mutex.
        ThreadAccess::lockFunc(2, 0, nullptr, 0);
        EXPECT_TRUE(log.getLines().empty());
        ThreadAccess::lockFunc(2, 0, nullptr, 0);
        EXPECT_EQ(log.getLines().size(), 1U);
    });
}

} // namespace sarn_test
