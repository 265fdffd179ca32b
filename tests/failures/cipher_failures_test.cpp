// SPDX-License-Identifier: Apache-2.0
// The results of a cipher when a call of libcrypto fails or does less than it should, or when there is no memory.
#include "failures/call_watch.h"
#include "support/cipher_test_data.h"

#include <climits>
#include <memory>

namespace sarn_test {

namespace {

const Bytes iv = makePattern(16);

class CipherFailures : public testing::Test {
protected:
    /// Makes `call` report `count` bytes fewer than it wrote.
    void shorten(const char* call, int count) {
        m_watch.after(call, [count](const Call& final) { *final.getPointer<int>(2) -= count; });
    }

    const TestKey m_key{32};
    sarn::CCipher_AES256CBC m_cipher;
    Buffer m_out;
    CallWatch m_watch;
};

} // namespace

TEST_F(CipherFailures, WithoutPadding_OfTooLittleOutput_RaiseAnErrorWithBothSizes) {
    shorten("EVP_EncryptFinal", 3);
    shorten("EVP_DecryptFinal", 16);
    expectError("OpenSSL encrypt error: output size does not match expected value",
                {"outSize", "29", "expectedOutSize", "32"},
                [&] { m_cipher.encryptWithoutPadding(m_key, "12345678901234567890", 20, m_out, false, iv.data()); });
    expectError("OpenSSL decrypt error: decrypted size does not match expected value",
                {"outSize", "0", "expectedOutSize", "16"},
                [&] { m_cipher.decryptWithoutPadding(m_key, iv.data(), 16, m_out, false, iv.data()); });
    EXPECT_EQ(m_watch.count("EVP_CIPHER_CTX_free"), 2);
}

TEST_F(CipherFailures, OfDecryptingNoBytes_FollowAnUpdateWithoutANullPointer) {
    EXPECT_THROW(m_cipher.decrypt(m_key, nullptr, 0, m_out, false, iv.data()), ul::CError);
    ASSERT_EQ(m_watch.count("EVP_DecryptUpdate"), 1);
    EXPECT_NE(m_watch.getCalls("EVP_DecryptUpdate")[0].arguments[3], 0);
}

TEST_F(CipherFailures, OfTheUpdate_AreReachedByTheLargestCiphertext) {
    // There is room for the result. The call fails before it reads so many bytes.
    const std::unique_ptr<unsigned char[]> data(new unsigned char[INT_MAX]);
    for (const int before : {0, 15}) {
        Buffer out;
        out.setUsed(before);
        m_watch.fail("EVP_DecryptUpdate");
        expectError("OpenSSL decrypt error.",
                    [&] { m_cipher.decrypt(m_key, data.get(), INT_MAX - 15, out, true, iv.data()); });
        EXPECT_EQ(out.getAllocated(), INT_MAX);
    }
}

TEST_F(CipherFailures, OfTheInit_AreReachedByTheLargestResult) {
    // There is room for the result. The call fails before it reads so many bytes.
    const std::unique_ptr<unsigned char[]> data(new unsigned char[INT_MAX]);
    constexpr char message[] = "OpenSSL encrypt init error.";
    m_watch.fail("EVP_EncryptInit");
    expectError(message, [&] { m_cipher.encrypt(m_key, data.get(), INT_MAX - 16, m_out, false, iv.data()); });
    m_watch.fail("EVP_DecryptInit");
    expectError(message, [&] { m_cipher.decrypt(m_key, data.get(), INT_MAX - 16, m_out, false, iv.data()); });
    EXPECT_EQ(m_watch.count("EVP_EncryptInit") + m_watch.count("EVP_DecryptInit"), 2);
}

using CipherResult = CipherFailures;

TEST_F(CipherResult, OfEachOperation_IsAllocatedOnceInItsFullSize) {
    restoresItsInput(m_cipher); // the first use allocates more
    const auto expectOneBlock = [&](decltype(&sarn::ICipher::encrypt) operation, const Bytes& input,
                                    const unsigned char* givenIV) {
        Buffer out;
        const int before = m_watch.count("realloc");
        (m_cipher.*operation)(m_key, input.data(), static_cast<int>(input.size()), out, false, givenIV);
        EXPECT_EQ(m_watch.count("realloc") - before, 1);
        return toBytes(out);
    };
    const Bytes data = makePattern(48);
    const Bytes padded = expectOneBlock(&sarn::ICipher::encrypt, data, nullptr);
    expectOneBlock(&sarn::ICipher::encrypt, data, iv.data());
    expectOneBlock(&sarn::ICipher::encryptWithoutPadding, makePattern(40), iv.data());
    expectOneBlock(&sarn::ICipher::decrypt, padded, nullptr);
    expectOneBlock(&sarn::ICipher::decryptWithoutPadding, data, iv.data());
}

} // namespace sarn_test
