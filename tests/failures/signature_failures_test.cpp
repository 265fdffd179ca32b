// SPDX-License-Identifier: Apache-2.0
// Sessions whose end fails, and the pieces in which they receive files.
#include "failures/call_watch.h"
#include "support/expect.h"
#include "support/signing.h"
#include "support/temp_folder.h"

#include <openssl/dsa.h>

#include <climits>
#include <cstring>

#include <malloc.h>

namespace sarn_test {

namespace {

class SignatureFailures : public testing::Test {
protected:
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

#if OPENSSL_VERSION_NUMBER < 0x30000000L
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
