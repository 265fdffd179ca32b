// SPDX-License-Identifier: Apache-2.0
// Encodings, HMAC and keys when a call of libcrypto or an allocation fails, and the arguments that libcrypto receives.
#include "failures/call_watch.h"
#include "failures/injection.h"
#include "support/expect.h"
#include "support/threads.h"

#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"

#include <openssl/err.h>
#include <openssl/opensslv.h>

namespace sarn_test {

namespace {

class KeyFailures : public testing::Test {
protected:
    CallWatch m_watch;
};

ul::P<sarn::CPasswordKeyCache> makeCache() {
    ul::TCryptBuffer<char> password;
    password.init("password", 8);
    return ul::make<sarn::CPasswordKeyCache>(password);
}

} // namespace

TEST_F(KeyFailures, OfAReadOfFewBytes_AreNoticed) {
    for (const char* const text : {"", "QQ", "QQ==", "QUI", "QUI="}) {
        Buffer out;
        m_watch.fail("BIO_read");
        expectInvalidArg("base64Decode", "invalid base64 data", [&] { sarn::base64Decode(text, out); });
    }
}

TEST_F(KeyFailures, OfADerivation_AreNotCached) {
    const ul::P<sarn::CPasswordKeyCache> cache = makeCache();
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
    unsigned char key[20];
    EXPECT_THROW(sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("password", 8, "salt", 4, 1, 20, key), ul::CError);
    EXPECT_EQ(ERR_peek_error(), 0U);
}

TEST_F(KeyFailures, OfAllocationsForANewKey_AreTriedAgain) {
    const ul::P<sarn::CPasswordKeyCache> cache = makeCache();
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

TEST_F(KeyFailures, EightThreadsThatAskForTheSameNewKey_DeriveItOnce) {
    const ul::P<sarn::CPasswordKeyCache> cache = makeCache();
    runOnThreads(8, [&](int) { cache->getKey(32, 258, 50000); });
    EXPECT_EQ(m_watch.count("PKCS5_PBKDF2_HMAC_SHA1"), 1);
}

} // namespace sarn_test
