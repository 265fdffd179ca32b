// SPDX-License-Identifier: Apache-2.0
// Every call of a digest into libcrypto fails once. One hash stands for all: they are one template.
#include "failures/linked/libcrypto_faults.h"
#include "support/allocation_failures.h"
#include "support/digest_test_data.h"
#include "support/new_process.h"

#include <gtest/gtest.h>

namespace sarn_test {

namespace {

const Bytes md5OfAbc = fromHex("900150983cd24fb0d6963f7d28e17f72");
const Bytes md5OfNothing = fromHex("d41d8cd98f00b204e9800998ecf8427e");

/// Expects the set-up of libcrypto to exist: what exists already takes no memory.
void expectOpenSSLIsInitialized() {
    const AllocationFailure failure(0);
    EXPECT_NO_THROW(sarn::COpenSSLInit::ensureInitialized());
    EXPECT_FALSE(failure.hasHappened());
}

template <class Type>
void expectInitializedBy() {
    expectInNewProcess([] {
        Type().createDigest();
        expectOpenSSLIsInitialized();
    });
}

} // namespace

TEST(DigestFaults, Creation_WhoseInitFails_RaisesTheDocumentedError) {
    sarn::CDigestType_MD5 type;
    LibcryptoFaults faults;
    faults.failCall("MD5_Init");
    expectError("Error initializing OpenSSL digest.", [&] { type.createDigest(); });
    EXPECT_EQ(faults.getCallCount("MD5_Final"), 0) << "a context that was not set up is not finalised";
}

TEST(DigestFaults, Update_ThatFails_RaisesTheDocumentedErrorAndLeavesTheDigestRunning) {
    sarn::CDigestType_MD5 type;
    const ul::P<sarn::IDigest> digest = type.createDigest();
    LibcryptoFaults faults;
    faults.failCall("MD5_Update");
    expectError("Error updating OpenSSL digest.", [&] { digest->update("abc", 3); });
    digest->update("abc", 3);
    EXPECT_EQ(finish(*digest), md5OfAbc);
}

TEST(DigestFaults, Finish_ThatFails_RaisesTheDocumentedErrorAndLeavesTheDigestRunning) {
    sarn::CDigestType_MD5 type;
    const ul::P<sarn::IDigest> digest = type.createDigest();
    digest->update("abc", 3);
    LibcryptoFaults faults;
    faults.failCall("MD5_Final");
    expectError("Error finalizing OpenSSL digest.", [&] { digest->finish(); });
    EXPECT_THROW(digest->getDigestData(), ul::CBadStateError);
    EXPECT_EQ(finish(*digest), md5OfAbc);
}

TEST(DigestFaults, Reset_WhoseFinalOrInitFails_RaisesTheDocumentedError) {
    sarn::CDigestType_MD5 type;
    const ul::P<sarn::IDigest> digest = type.createDigest();
    LibcryptoFaults faults;
    faults.failCall("MD5_Final");
    expectError("Error finalizing OpenSSL digest.", [&] { digest->reset(); });
    faults.failCall("MD5_Init");
    expectError("Error initializing OpenSSL digest.", [&] { digest->reset(); });
    EXPECT_EQ(getResult(*digest), md5OfNothing) << "it was finished, and is running again once Init has succeeded";
    digest->reset();
    digest->update("abc", 3);
    EXPECT_EQ(finish(*digest), md5OfAbc);
}

TEST(DigestFaults, RunningDigest_IsFinalisedOnceByResetAndByItsEnd) {
    sarn::CDigestType_MD5 type;
    LibcryptoFaults faults;
    {
        const ul::P<sarn::IDigest> digest = type.createDigest();
        EXPECT_EQ(faults.getCallCount("MD5_Final"), 0);
        digest->reset();
        EXPECT_EQ(faults.getCallCount("MD5_Final"), 1);
    }
    EXPECT_EQ(faults.getCallCount("MD5_Final"), 2);
    {
        const ul::P<sarn::IDigest> digest = type.createDigest();
        digest->finish();
        digest->finish();
    }
    EXPECT_EQ(faults.getCallCount("MD5_Final"), 3) << "a finished one is not finalised again";
    EXPECT_EQ(faults.getCallCount("MD5_Init"), 3);
}

TEST(DigestFaults, DigestLoadedAsNotInitialized_IsNotFinalised) {
    sarn::CDigestType_MD5 type;
    const ul::P<sarn::IDigest> source = type.createDigest();
    Bytes state = storeState(*source);
    state.at(state.size() - 2) = 0;
    LibcryptoFaults faults;
    for (const bool isReset : {false, true}) {
        ul::P<sarn::IDigest> digest = type.createDigest();
        loadState(*digest, state);
        if (isReset)
            digest->reset();
        EXPECT_EQ(faults.getCallCount("MD5_Final"), 0);
        digest = nullptr;
        EXPECT_EQ(faults.getCallCount("MD5_Final"), isReset ? 1 : 0);
    }
}

TEST(DigestFaultsDeathTest, FirstHashOfAProcess_InitializesOpenSSL) {
    expectInitializedBy<sarn::CDigestType_MD4>();
    expectInitializedBy<sarn::CDigestType_MD5>();
    expectInitializedBy<sarn::CDigestType_SHA1>();
    expectInitializedBy<sarn::CDigestType_SHA256>();
}

TEST(DigestFaultsDeathTest, FirstHashOfAProcess_InitializesOpenSSLBeforeItCallsIt) {
    expectInNewProcess([] {
        LibcryptoFaults faults;
        faults.failCall("MD5_Init");
        EXPECT_THROW(sarn::CDigestType_MD5().createDigest(), ul::CError);
        expectOpenSSLIsInitialized();
    });
}

TEST(DigestFaultsDeathTest, DestructorWhoseFinalFails_EndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            sarn::CDigestType_MD5 type;
            ul::P<sarn::IDigest> digest = type.createDigest();
            LibcryptoFaults faults;
            faults.failCall("MD5_Final");
            digest = nullptr;
        },
        "");
}

TEST(DigestFaults, Update_TakesNoMemoryAndPassesTheBufferOn) {
    const Bytes input = makePattern(10000);
    for (const char* const id : digestIDs) {
        const ul::P<sarn::IDigest> digest = createDigest(id);
        const AllocationFailure failure(0);
        digest->update(input.data(), 10000);
        digest->finish();
        EXPECT_FALSE(failure.hasHappened()) << id;
    }
}

TEST(DigestFaults, LoadState_WithoutMemory_RaisesAndLeavesTheDigestAsItWas) {
    for (const char* const id : digestIDs) {
        const ul::P<sarn::IDigest> source = createDigest(id);
        feed(*source, makePattern(100));
        finish(*source);
        source->getDigestData();
        const Bytes state = storeState(*source);
        const ul::P<sarn::IDigest> digest = createDigest(id);
        feed(*digest, makePattern(70));
        const Bytes before = storeState(*digest);
        bool isLoaded = false;
        for (int index = 0; !isLoaded; ++index) {
            {
                const AllocationFailure failure(index);
                try {
                    loadState(*digest, state);
                    isLoaded = true;
                } catch (const std::bad_alloc&) {
                    EXPECT_TRUE(failure.hasHappened());
                }
            }
            EXPECT_EQ(toHex(storeState(*digest)), toHex(isLoaded ? state : before)) << id << " " << index;
        }
    }
}

TEST(DigestFaults, Creation_WithoutMemory_RaisesAndLeavesNothingBehind) {
    for (const char* const id : digestIDs) {
        const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType(id);
        EXPECT_GT(failEachAllocation([&type] { type->createDigest(); }), 0) << id;
    }
}

} // namespace sarn_test
