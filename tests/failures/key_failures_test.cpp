// SPDX-License-Identifier: Apache-2.0
// Encodings, HMAC, keys and signatures when a call of libcrypto or an allocation fails, and the arguments that
// libcrypto receives.
#include "failures/injection.h"
#include "support/password_keys.h"
#include "support/signing.h"
#include "support/threads.h"

#include <openssl/dsa.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/opensslv.h>

#include <cstring>

#include <malloc.h>

namespace sarn_test {

namespace {

struct KeyFailures : testing::Test {
    CallWatch m_watch;
};

struct SignatureFailures : testing::Test {
    ul::P<sarn::ISigner> beginSign() const { return sarn::createRSA_SHA1()->beginSign(m_privateKey, ""); }

    /// Signs a file of `size` bytes and verifies it. Returns the sizes of the pieces that libcrypto received.
    std::vector<std::intptr_t> feedFileOf(int size) const {
        const TempFolder folder;
        const ul::CWindowsPath path = folder.write("f", std::string(static_cast<std::size_t>(size), 'x'));
        const CallWatch watch;
        Buffer signature;
        sarn::createFileSignature_RSA_SHA1(path, m_privateKey, signature);
        EXPECT_TRUE(sarn::verifyFileSignature_RSA_SHA1(path, m_publicKey, signature));
        std::vector<std::intptr_t> sizes;
        for (const Call& update : watch.getCalls("EVP_DigestUpdate"))
            sizes.push_back(update.arguments[2]);
        return sizes;
    }

    const ul::String m_privateKey = readKey("rsa1024");
    const ul::String m_publicKey = readPublicKey("rsa1024");
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

TEST_F(KeyFailures, ReadOfMoreBytesThanWereAskedFor_IsRefused) {
    Buffer out;
    out.setUsed(1);
    m_watch.failWith(4, "BIO_read");
    expectInvalidArg("base64Decode", "invalid base64 data", [&] { sarn::base64Decode("QUJD", out); });
    EXPECT_EQ(out.getUsed(), 1);
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
    // The first use of libcrypto is not part of this: libcrypto 3.5 would wait for itself for ever.
    deriveKey("password", "salt", 1, 20);
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

TEST_F(SignatureFailures, OfSigningIntoMemory_LeaveTheSize) {
    const ul::P<sarn::ISigner> signer = beginSign();
    CallWatch watch;
    watch.fail("EVP_SignFinal");
    unsigned char room[128];
    int size = -7;
    EXPECT_THROW(signer->finish(room, size), ul::CError);
    EXPECT_EQ(size, -7);
}

TEST_F(SignatureFailures, SignatureThatIsLongerThanItsRoom_IsAnError) {
    const ul::P<sarn::ISigner> signer = beginSign();
    CallWatch watch;
    watch.after("EVP_SignFinal", [](const Call& call) { *call.getPointer<unsigned>(2) = UINT_MAX; });
    Buffer signature;
    expectError("OpenSSL sign error.", [&] { signer->finish(signature); });
}

TEST_F(SignatureFailures, KeysWithoutAPassphrase_AreReadWithAnEmptyOne) {
    const CallWatch watch;
    sarn::COpenSSLSignatureAlgo::CSigner(EVP_sha1(), m_privateKey.toLatin1().c_str(), nullptr);
    sarn::createRSA_SHA1()->beginVerify(m_publicKey);
    EXPECT_STREQ(watch.getCalls("PEM_read_bio_PrivateKey").at(0).getPointer<char>(3), "");
    EXPECT_STREQ(watch.getCalls("PEM_read_bio_PUBKEY").at(0).getPointer<char>(3), "");
}

#if OPENSSL_VERSION_NUMBER < 0x30000000L
TEST_F(SignatureFailures, DSAKeyThatHasNoSignatures_IsTried64Times) {
    const ul::P<sarn::ISigner> signer = sarn::createDSS_SHA1()->beginSign(readHostileKey("dsa_g_is_p"), "");
    const CallWatch watch;
    Buffer signature;
    EXPECT_THROW(signer->finish(signature), ul::CError);
    EXPECT_EQ(watch.count("BN_mod_exp_mont"), 64);
}

TEST_F(SignatureFailures, DSAMethodOfAHost_SignsInsteadOfOurs) {
    static int calls;
    calls = 0;
    DSA_METHOD* const method = DSA_meth_dup(DSA_OpenSSL());
    DSA_meth_set_sign(method, [](const unsigned char* digest, int size, DSA* key) {
        ++calls;
        return DSA_meth_get_sign(DSA_OpenSSL())(digest, size, key);
    });
    DSA_set_default_method(method);
    const Bytes signature = sign(sarn::createDSS_SHA1(), readKey("dsa1024"), toBytes("data"));
    DSA_set_default_method(DSA_OpenSSL());
    DSA_meth_free(method);
    EXPECT_TRUE(verify(sarn::createDSS_SHA1(), readPublicKey("dsa1024"), toBytes("data"), signature));
    EXPECT_EQ(calls, 1);
}
#endif

TEST_F(SignatureFailures, OfVerifying_AreMinusOne_AndOnlyOneIsAMatch) {
    Buffer signature;
    beginSign()->finish(signature);
    CallWatch watch;
    const auto finishWith = [&](int result) {
        const ul::P<sarn::IVerifier> verifier = sarn::createRSA_SHA1()->beginVerify(m_publicKey);
        watch.failWith(result, "EVP_VerifyFinal");
        return verifier->finish(signature);
    };
    expectError("OpenSSL verify error.", [&] { finishWith(-1); });
    for (const int result : {0, -2, -100, 2})
        EXPECT_FALSE(finishWith(result)) << result;
    EXPECT_TRUE(finishWith(1));
}

TEST_F(SignatureFailures, PrivateKeyGivenForAPublicOne_IsNotInTheMemoryThatIsFreed) {
    const std::string piece = m_privateKey.toLatin1().substr(200, 40);
    int freed = 0;
    CallWatch watch;
    for (const char* const name : {"_ZdlPv", "_ZdlPvm"})
        watch.before(name, [&](const Call& call) {
            void* const block = call.getPointer<void>(0);
            EXPECT_EQ(::memmem(block, ::malloc_usable_size(block), piece.data(), piece.size()), nullptr);
            ++freed;
        });
    EXPECT_THROW(sarn::createRSA_SHA1()->beginVerify(m_privateKey), ul::CError);
    EXPECT_GT(freed, 0);
}

TEST_F(SignatureFailures, File_NeedsAnUpdateForEachOfItsChunks_AndNoneIfItIsEmpty) {
    EXPECT_EQ(feedFileOf(0), std::vector<std::intptr_t>());
    EXPECT_EQ(feedFileOf(20000), (std::vector<std::intptr_t>{8192, 8192, 3616, 8192, 8192, 3616}));
}

} // namespace sarn_test
