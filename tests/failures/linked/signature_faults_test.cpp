// SPDX-License-Identifier: Apache-2.0
// Every call of the signatures into libcrypto fails once.
#include "failures/linked/libcrypto_faults.h"
#include "support/expect.h"
#include "support/key_files.h"
#include "support/temp_folder.h"

#include "sarn/signature.h"

#include <gtest/gtest.h>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;
using Names = std::vector<std::string>;

const ul::String& getPrivateKey() {
    static const ul::String key = readKey("rsa1024");
    return key;
}

const ul::String& getPublicKey() {
    static const ul::String key = readPublicKey("rsa1024");
    return key;
}

ul::P<sarn::ISigner> beginSign() {
    return sarn::createRSA_SHA1()->beginSign(getPrivateKey(), "");
}

ul::P<sarn::IVerifier> beginVerify() {
    return sarn::createRSA_SHA1()->beginVerify(getPublicKey());
}

/// Expects that a construction fails with `message` and leaves its context to nobody: reset `resets` times, not freed.
template <class Begin>
void expectBeginFails(const char* call, const char* message, int resets, Begin begin) {
    SCOPED_TRACE(call);
    LibcryptoFaults faults;
    faults.failCall(call);
    expectError(message, begin);
    EXPECT_EQ(faults.getCallCount(call), 1);
    EXPECT_EQ(faults.getCallCount("EVP_MD_CTX_reset"), resets);
    EXPECT_EQ(faults.getCallCount("EVP_MD_CTX_free"), 0);
    EXPECT_EQ(faults.getCallCount("EVP_PKEY_free"), 0);
}

} // namespace

TEST(SignatureFaults, BeginSign_WhoseCallsFail_RaisesTheDocumentedErrorAndFreesNoContext) {
    expectBeginFails("EVP_MD_CTX_new", "OpenSSL sign init error.", 0, beginSign);
    expectBeginFails("EVP_DigestInit", "OpenSSL sign init error.", 0, beginSign);
    expectBeginFails("BIO_new_mem_buf", "OpenSSL key corrupted.", 1, beginSign);
    expectBeginFails("PEM_read_bio_PrivateKey", "OpenSSL key corrupted.", 1, beginSign);
}

TEST(SignatureFaults, BeginVerify_WhoseCallsFail_RaisesTheDocumentedErrorAndFreesNoContext) {
    expectBeginFails("EVP_MD_CTX_new", "OpenSSL verify init error.", 0, beginVerify);
    expectBeginFails("EVP_DigestInit", "OpenSSL verify init error.", 0, beginVerify);
    expectBeginFails("BIO_new_mem_buf", "OpenSSL key corrupted.", 1, beginVerify);
    expectBeginFails("PEM_read_bio_PUBKEY", "OpenSSL key corrupted.", 1, beginVerify);
}

TEST(SignatureFaults, Sessions_CallLibcryptoInTheDocumentedOrder) {
    LibcryptoFaults faults;
    {
        const ul::P<sarn::ISigner> signer = beginSign();
        signer->update("abc", 3);
        Buffer signature;
        signer->finish(signature);
    }
    EXPECT_EQ(faults.getCalls(),
              (Names{"EVP_MD_CTX_new", "EVP_DigestInit", "BIO_new_mem_buf", "PEM_read_bio_PrivateKey", "BIO_free_all",
                     "EVP_DigestUpdate", "EVP_SignFinal", "EVP_MD_CTX_reset", "EVP_MD_CTX_free", "EVP_PKEY_free"}));
}

TEST(SignatureFaults, Verifier_CallsLibcryptoInTheDocumentedOrder) {
    LibcryptoFaults faults;
    {
        const ul::P<sarn::IVerifier> verifier = beginVerify();
        verifier->update("abc", 3);
        verifier->finish("x", 1);
    }
    EXPECT_EQ(faults.getCalls(),
              (Names{"EVP_MD_CTX_new", "EVP_DigestInit", "BIO_new_mem_buf", "PEM_read_bio_PUBKEY", "BIO_free_all",
                     "EVP_DigestUpdate", "EVP_VerifyFinal", "EVP_MD_CTX_reset", "EVP_MD_CTX_free", "EVP_PKEY_free"}));
}

TEST(SignatureFaults, SignerUpdate_ThatFails_RaisesTheDocumentedError) {
    const ul::P<sarn::ISigner> signer = beginSign();
    LibcryptoFaults faults;
    faults.failCall("EVP_DigestUpdate");
    expectError("OpenSSL sign error.", [&] { signer->update("abc", 3); });
}

TEST(SignatureFaults, SignerFinish_ThatFails_RaisesTheDocumentedErrorAndLeavesTheSize) {
    const ul::P<sarn::ISigner> signer = beginSign();
    LibcryptoFaults faults;
    faults.failCall("EVP_SignFinal");
    unsigned char room[128];
    int size = -7;
    expectError("OpenSSL sign error.", [&] { signer->finish(room, size); });
    EXPECT_EQ(size, -7);
    faults.failCall("EVP_SignFinal");
    Buffer signature;
    expectError("OpenSSL sign error.", [&] { signer->finish(signature); });
    EXPECT_EQ(signature.getUsed(), 128) << "the buffer stays at the most";
}

TEST(SignatureFaults, VerifierUpdate_ThatFails_RaisesTheDocumentedError) {
    const ul::P<sarn::IVerifier> verifier = beginVerify();
    LibcryptoFaults faults;
    faults.failCall("EVP_DigestUpdate");
    expectError("OpenSSL verify update error.", [&] { verifier->update("abc", 3); });
}

TEST(SignatureFaults, VerifierFinish_RaisesOnMinusOneAndIsFalseForAllElseButOne) {
    Buffer signature;
    beginSign()->finish(signature);
    LibcryptoFaults faults;
    const auto finishWith = [&](int result) {
        const ul::P<sarn::IVerifier> verifier = beginVerify();
        faults.setResult("EVP_VerifyFinal", result);
        faults.failCall("EVP_VerifyFinal");
        return verifier->finish(signature);
    };
    expectError("OpenSSL verify error.", [&] { finishWith(-1); });
    for (const int result : {0, -2, -100, 2})
        EXPECT_FALSE(finishWith(result)) << result;
    EXPECT_TRUE(finishWith(1));
}

TEST(SignatureFaults, EmptyFile_GivesNoUpdate) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "");
    LibcryptoFaults faults;
    Buffer signature;
    sarn::createFileSignature_RSA_SHA1(path, getPrivateKey(), signature);
    EXPECT_TRUE(sarn::verifyFileSignature_RSA_SHA1(path, getPublicKey(), signature));
    EXPECT_EQ(faults.getCallCount("EVP_DigestUpdate"), 0);
}

TEST(SignatureFaults, File_GivesAnUpdateForEachOfItsChunks) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", std::string(20000, 'x'));
    LibcryptoFaults faults;
    Buffer signature;
    sarn::createFileSignature_RSA_SHA1(path, getPrivateKey(), signature);
    EXPECT_TRUE(sarn::verifyFileSignature_RSA_SHA1(path, getPublicKey(), signature));
    EXPECT_EQ(faults.getCallCount("EVP_DigestUpdate"), 2 * 3);
    EXPECT_EQ(faults.getCallCount("EVP_DigestUpdate of 8192 bytes"), 2 * 2);
}

} // namespace sarn_test
