// SPDX-License-Identifier: Apache-2.0
// Memory that is not to be had: what is told, what is freed, and that the next try works.
#include "failures/linked/libcrypto_faults.h"
#include "support/allocation_failures.h"
#include "support/cipher_test_data.h"
#include "support/log_capture.h"

#include "sarn/openssl_init.h"
#include "sarn/signature.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>

namespace sarn_test {

namespace {

using sarn::COpenSSLInit;

/// Whether `get` creates something: with no memory to be had it fails then.
template <class Get>
bool needsMemory(Get get) {
    const AllocationFailure failure(0);
    try {
        get();
    } catch (const ul::CError& error) {
        return error.getMessage() == "Global object could not be created.";
    }
    return false;
}

/// Whether `action` creates what `first` gets and after it what `second` gets: with memory for one thing more each time
/// there comes a moment at which only the first is there.
template <class Action, class First, class Second>
bool createsInOrder(Action action, First first, Second second) {
    bool isFirstAlone = false;
    bool isDone = false;
    for (int index = 0; !isDone; ++index) {
        try {
            const AllocationFailure failure(index);
            action();
            isDone = !failure.hasHappened();
        } catch (const std::exception&) {
            // The next one gets further.
        }
        isFirstAlone = isFirstAlone || (!needsMemory(first) && needsMemory(second));
    }
    return isFirstAlone && !needsMemory(first) && !needsMemory(second);
}

struct InitAccess : COpenSSLInit {
    using COpenSSLInit::disposeGlobalInstance;
};

struct CleanerAccess : COpenSSLInit::CCleaner {
    using CCleaner::disposeGlobalInstance;
};

struct ThreadAccess : COpenSSLInit::CThreadStuff {
    using CThreadStuff::disposeGlobalInstance;
    using CThreadStuff::doLock;
};

} // namespace

TEST(GlobalInstancesDeathTest, EnsureInitialized_CreatesOnlyTheTwoCompanions) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            COpenSSLInit::ensureInitialized();
            const bool isRight = !needsMemory(COpenSSLInit::CThreadStuff::get) &&
                                 !needsMemory(COpenSSLInit::CCleaner::get) && needsMemory(COpenSSLInit::get);
            std::exit(isRight ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(GlobalInstancesDeathTest, Get_CreatesAllThree) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            COpenSSLInit::get();
            const bool isRight = !needsMemory(COpenSSLInit::CThreadStuff::get) &&
                                 !needsMemory(COpenSSLInit::CCleaner::get) && !needsMemory(COpenSSLInit::get);
            std::exit(isRight ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(GlobalInstancesDeathTest, ACipher_CreatesOnlyTheTwoCompanions) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const ul::P<sarn::ICipher> cipher = ul::make<sarn::CCipher_AES256CBC>();
            const bool isRight = !needsMemory(COpenSSLInit::CThreadStuff::get) &&
                                 !needsMemory(COpenSSLInit::CCleaner::get) && needsMemory(COpenSSLInit::get);
            std::exit(isRight ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(GlobalInstancesDeathTest, EnsureInitialized_CreatesTheThreadStuffAndThenTheCleaner) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::exit(createsInOrder(COpenSSLInit::ensureInitialized, COpenSSLInit::CThreadStuff::get,
                                         COpenSSLInit::CCleaner::get)
                              ? 0
                              : 1),
                testing::ExitedWithCode(0), "");
}

TEST(GlobalInstancesDeathTest, ASignatureAlgorithm_CreatesTheThreadStuffAndThenTheCleaner) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        std::exit(
            createsInOrder(sarn::createRSA_SHA1, COpenSSLInit::CThreadStuff::get, COpenSSLInit::CCleaner::get) ? 0 : 1),
        testing::ExitedWithCode(0), "");
}

TEST(GlobalInstancesDeathTest, Get_WithMemoryForOneInstance_CreatesItsOwn) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            try {
                const AllocationFailure afterHolderAndObject(2);
                COpenSSLInit::get();
            } catch (const std::exception&) {
                // There was no memory for the companions.
            }
            const bool areCompanionsMissing =
                needsMemory(COpenSSLInit::CThreadStuff::get) && needsMemory(COpenSSLInit::CCleaner::get);
            COpenSSLInit::ensureInitialized();
            std::exit(areCompanionsMissing && !needsMemory(COpenSSLInit::get) ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(GlobalInstancesDeathTest, DisposeGlobalInstanceOfTheAnchor_CreatesNothing) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            InitAccess::disposeGlobalInstance();
            const bool isRight = needsMemory(COpenSSLInit::CThreadStuff::get) &&
                                 needsMemory(COpenSSLInit::CCleaner::get) && needsMemory(COpenSSLInit::get);
            std::exit(isRight ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(GlobalInstancesDeathTest, DisposeGlobalInstanceOfACompanion_CreatesThatOneAlone) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            CleanerAccess::disposeGlobalInstance();
            std::exit(!needsMemory(COpenSSLInit::CCleaner::get) && needsMemory(COpenSSLInit::CThreadStuff::get) ? 0
                                                                                                                : 1);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EXIT(
        {
            ThreadAccess::disposeGlobalInstance();
            std::exit(!needsMemory(COpenSSLInit::CThreadStuff::get) && needsMemory(COpenSSLInit::CCleaner::get) ? 0
                                                                                                                : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(GlobalInstancesDeathTest, Get_WithoutMemoryForTheHolder_RaisesTheSlotsErrorAndTriesAgain) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const bool hasFailed = needsMemory(COpenSSLInit::CCleaner::get);
            std::exit(hasFailed && COpenSSLInit::CCleaner::get() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(GlobalInstancesDeathTest, Registry_WhoseConstructionFailsAtAnyAllocation_RaisesAndTriesAgain) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const int failures = failEachAllocation([] { sarn::CCipherManager::get(); });
            std::exit(failures > 10 && sarn::CCipherManager::get()->findCipher("null") ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(CThreadStuffFaults, DoLock_WithoutMemory_LocksAndUnlocks) {
    ThreadAccess threads;
    const LogCapture log;
    {
        const AllocationFailure failure(0);
        threads.doLock(1, 0);
        threads.doLock(2, 0);
        EXPECT_FALSE(failure.hasHappened());
    }
    EXPECT_TRUE(log.getLines().empty());
}

TEST(CThreadStuffFaults, DoLock_WithoutMemoryForItsLogLine_ThrowsNothing) {
    ThreadAccess threads;
    const LogCapture log;
    const auto countFailures = [&](int mode, int n) {
        for (int index = 0;; ++index) {
            const AllocationFailure failure(index);
            EXPECT_NO_THROW(threads.doLock(mode, n));
            if (!failure.hasHappened())
                return index;
        }
    };
    EXPECT_GT(countFailures(1, 1), 0);
    EXPECT_GT(countFailures(2, 0), 0);
}

TEST(CipherFaults, LargestResultOfAnInt_IsNotRefused) {
    const TestKey key(32);
    const Bytes iv(16);
    sarn::CCipher_AES256CBC cipher;
    // There is room for it; it ends where libcrypto would read that much.
    const auto expectAccepted = [](const char* call, auto operation) {
        LibcryptoFaults faults;
        faults.failCall(call);
        ul::TBuffer<unsigned char> out;
        expectError("OpenSSL encrypt init error.", [&] { operation(out); });
        EXPECT_EQ(faults.getCallCount(call), 1);
    };
    expectAccepted("EVP_EncryptInit",
                   [&](auto& out) { cipher.encrypt(key, "x", INT_MAX - 16, out, false, iv.data()); });
    expectAccepted("EVP_DecryptInit",
                   [&](auto& out) { cipher.decrypt(key, "x", INT_MAX - 16, out, false, iv.data()); });
}

TEST(CipherFaults, OperationsWithoutMemoryForTheResult_PassTheErrorOnAndFreeTheirContext) {
    const TestKey key(32);
    const Bytes iv(16);
    sarn::CCipher_AES256CBC cipher;
    ul::TBuffer<unsigned char> encrypted;
    // The random generator, too, is created on first use.
    cipher.encrypt(key, "data", 4, encrypted, false, nullptr);
    cipher.encrypt(key, "data", 4, encrypted, false, iv.data());
    const auto expectPassed = [&](auto operation) {
        LibcryptoFaults faults;
        const int failed = failEachAllocation([&] {
            ul::TBuffer<unsigned char> out;
            operation(out);
        });
        EXPECT_EQ(failed, 1) << "the result's block is allocated once, in its full size";
        EXPECT_EQ(faults.getCallCount("EVP_CIPHER_CTX_free"), faults.getCallCount("EVP_CIPHER_CTX_new"));
    };
    expectPassed([&](auto& out) { cipher.encrypt(key, "data", 4, out, false, iv.data()); });
    expectPassed([&](auto& out) { cipher.encrypt(key, "data", 4, out, false, nullptr); });
    expectPassed([&](auto& out) { cipher.encryptWithoutPadding(key, "data", 4, out, false, iv.data()); });
    expectPassed(
        [&](auto& out) { cipher.decrypt(key, encrypted.getData(), encrypted.getUsed(), out, false, iv.data()); });
    expectPassed([&](auto& out) {
        cipher.decryptWithoutPadding(key, encrypted.getData(), encrypted.getUsed(), out, false, iv.data());
    });
}

} // namespace sarn_test
