// SPDX-License-Identifier: Apache-2.0
// Passwords and keys are gone from memory when what held them gives it back.
#include "support/expect.h"
#include "support/key_files.h"
#include "support/memory_spy.h"

#include "sarn/password_key_cache.h"
#include "sarn/signature.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace sarn_test {

namespace {

using sarn::CPasswordKeyCache;
using Key = ul::PC<ul::TCryptBuffer<unsigned char>>;

ul::P<CPasswordKeyCache> makeCache(const char* password) {
    ul::TCryptBuffer<char> buffer;
    buffer.init(password, static_cast<int>(std::strlen(password)));
    return ul::make<CPasswordKeyCache>(buffer);
}

} // namespace

TEST(CPasswordKeyCache, PasswordAndKeys_AreWipedWhenTheyAreFreed) {
    constexpr char password[] = "correct horse battery staple";
    // Eight bytes of the key are enough to find it by.
    const Key known = makeCache(password)->getKey(32, 258, 1000);
    const std::string secretKey(reinterpret_cast<const char*>(known->getData()), 8);
    ASSERT_EQ(secretKey.find('\0'), std::string::npos);
    for (const char* const secret : {secretKey.c_str(), password}) {
        const SecretSpy spy(secret);
        {
            const ul::P<CPasswordKeyCache> cache = makeCache(password);
            const Key key = cache->getKey(32, 258, 1000);
            for (unsigned long long salt = 0; salt < 50; ++salt)
                cache->getKey(32, salt, 1);
            EXPECT_THROW(cache->getKey(-1, 1, 1), ul::CError);
        }
        EXPECT_GT(spy.getFreedCount(), 50);
        EXPECT_EQ(spy.getFoundCount(), 0);
    }
}

TEST(SignatureAlgo, PrivateKeyAndPassphrase_LeaveNoNarrowCopyBehind) {
    const ul::String key = readKey("rsa2048_encrypted_traditional");
    const std::string line = key.toLatin1().substr(200, 40);
    static const std::string secret = line;
    const SecretSpy spy(secret.c_str());
    sarn::createRSA_SHA1()->beginSign(key, testPassphrase);
    EXPECT_GT(spy.getFreedCount(), 0);
    EXPECT_EQ(spy.getFoundCount(), 0);
}

TEST(SignatureAlgo, PrivateKeyGivenForAPublicOne_LeavesNoNarrowCopyBehind) {
    const ul::String key = readKey("rsa2048");
    static const std::string secret = key.toLatin1().substr(200, 40);
    const SecretSpy spy(secret.c_str());
    EXPECT_THROW(sarn::createRSA_SHA1()->beginVerify(key), ul::CError);
    EXPECT_GT(spy.getFreedCount(), 0);
    EXPECT_EQ(spy.getFoundCount(), 0);
}

} // namespace sarn_test
