// SPDX-License-Identifier: Apache-2.0
// Encodings, HMAC and keys when a call of libcrypto or an allocation fails, and the arguments that libcrypto receives.
#include "failures/injection.h"
#include "support/expect.h"
#include "support/password_keys.h"
#include "support/threads.h"

#include "sarn/encoding.h"

#include <openssl/err.h>
#include <openssl/opensslv.h>

namespace sarn_test {

namespace {

class KeyFailures : public testing::Test {
protected:
    CallWatch m_watch;
};

} // namespace

TEST_F(KeyFailures, OfAReadOfFewBytes_AreNoticed) {
    for (const char* const text : {"", "QQ", "QQ==", "QUI", "QUI="}) {
        Buffer out;
        m_watch.fail("BIO_read");
        expectInvalidArg("base64Decode", "invalid base64 data", [&] { sarn::base64Decode(text, out); });
    }
}

TEST_F(KeyFailures, OfADerivation_AreNotCached) {
    const ul::P<sarn::CPasswordKeyCache> cache = makeKeyCache();
    m_watch.fail("PKCS5_PBKDF2_HMAC_SHA1");
    EXPECT_THROW(cache->getKey(32, 258, 1000), ul::CError);
    const auto key = cache->getKey(32, 258, 1000);
    EXPECT_TRUE(key);
    EXPECT_EQ(cache->getKey(32, 258, 1000), key);
    EXPECT_EQ(m_watch.count("PKCS5_PBKDF2_HMAC_SHA1"), 2) << "the cached key needed no third";
}

TEST_F(KeyFailures, OfADerivation_LeaveLibcryptosErrorQueueAsItWas) {
    m_watch.before("PKCS5_PBKDF2_HMAC_SHA1", [](Call& call) {
        ERR_put_error(ERR_LIB_USER, 0, 100, "libcrypto.c", 1);
        call.fails = true;
    });
    EXPECT_THROW(deriveKey("password", "salt", 1, 20), ul::CError);
    EXPECT_EQ(ERR_peek_error(), 0U);
}

TEST_F(KeyFailures, OfAllocationsForANewKey_AreTriedAgain) {
    const ul::P<sarn::CPasswordKeyCache> cache = makeKeyCache();
    int raised = 0;
    for (bool isMade = false; !isMade;) {
        const AllocationFailure failure(raised);
        try {
            // libcrypto works without some of its allocations.
            isMade = cache->getKey(32, 258, 1) != nullptr;
        } catch (const std::exception&) {
            ++raised;
        }
    }
    EXPECT_GT(raised, 1);
    EXPECT_TRUE(cache->getKey(32, 258, 1));
}

TEST_F(KeyFailures, NullKeyAndPassword_ReachLibcryptoAsEmptyStrings) {
    unsigned char key[20];
    Buffer out;
    sarn::calcHMAC_SHA1(out, "x", 1, nullptr, 0);
    sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1(nullptr, 0, "salt", 4, 1, 20, key);
#if OPENSSL_VERSION_NUMBER >= 0x30000000L
    const Call hmac = m_watch.getCalls("HMAC_Init_ex").at(0);
#else
    const Call hmac = m_watch.getCalls("HMAC").at(0);
#endif
    const Call derivation = m_watch.getCalls("PKCS5_PBKDF2_HMAC_SHA1").at(0);
    EXPECT_STREQ(hmac.getPointer<char>(1), "");
    EXPECT_STREQ(derivation.getPointer<char>(0), "");
}

TEST_F(KeyFailures, ThreadsThatAskForTheSameKeys_DeriveEachOnceAndOnceMoreForEachFailure) {
    constexpr int threadCount = 8;
    constexpr int keyCount = 40;
    for (const int failureCount : {0, 3, keyCount}) {
        const ul::P<sarn::CPasswordKeyCache> cache = makeKeyCache();
        CallWatch watch;
        for (int i = 0; i < failureCount; ++i)
            watch.fail("PKCS5_PBKDF2_HMAC_SHA1", 2 * i);
        std::atomic<int> raised{0};
        std::atomic<int> differing{0};
        runOnThreads(threadCount, [&](int thread) {
            // Half of the threads ask in the other order. Each asks again until it has got the key.
            for (int i = 0; i < keyCount; ++i) {
                const auto salt = static_cast<unsigned>(thread % 2 == 0 ? i : keyCount - 1 - i);
                ul::PC<ul::TCryptBuffer<unsigned char>> key;
                while (!key) {
                    try {
                        key = cache->getKey(32, salt, 100);
                    } catch (const ul::CError&) {
                        ++raised;
                    }
                }
                differing += cache->getKey(32, salt, 100) != key ? 1 : 0;
            }
        });
        EXPECT_EQ(differing, 0) << "a key was replaced by another";
        EXPECT_EQ(raised, failureCount);
        EXPECT_EQ(watch.count("PKCS5_PBKDF2_HMAC_SHA1"), keyCount + failureCount);
    }
}

} // namespace sarn_test
