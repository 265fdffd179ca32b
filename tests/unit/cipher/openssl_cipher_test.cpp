// SPDX-License-Identifier: Apache-2.0
#include "support/cipher_test_data.h"

#include <openssl/evp.h>

#include <memory>
#include <set>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;

const TestKey key32(32);
const Bytes iv16 = makePattern(16);

ul::P<sarn::ICipher> getAES256() {
    return sarn::CCipherManager::get()->getCipher("aes256cbc");
}

/// A buffer that holds some bytes, to see whether an operation touches them.
struct FilledBuffer : Buffer {
    FilledBuffer() { fill(*this, {9, 8, 7}); }
    bool isUntouched() const { return toBytes(*this) == Bytes{9, 8, 7}; }
};

} // namespace

TEST(COpenSSLCipher, Sizes_OfRegisteredCiphers_AreTheDocumentedOnes) {
    for (const CipherSizes& sizes : getRegisteredCiphers()) {
        SCOPED_TRACE(sizes.id);
        const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher(sizes.id);
        EXPECT_TRUE(cipher->getID() == sizes.id);
        EXPECT_EQ(cipher->getKeySize(), sizes.key);
        EXPECT_EQ(cipher->getIVSize(), sizes.iv);
        EXPECT_EQ(cipher->getBlockSize(), sizes.block);
    }
}

TEST(COpenSSLCipher, IDEA_WhereLibcryptoHasIt_HasTheDocumentedSizes_ElseRaisesAClearError) {
    if (hasIDEA) {
        const auto cipher = ul::make<sarn::CCipher_IDEACBC>();
        EXPECT_TRUE(cipher->getID() == "ideacbc");
        EXPECT_EQ(cipher->getKeySize(), 16);
        EXPECT_EQ(cipher->getIVSize(), 8);
        EXPECT_EQ(cipher->getBlockSize(), 8);
    } else {
        expectError("IDEA is not available in this OpenSSL.", [] { ul::make<sarn::CCipher_IDEACBC>(); });
    }
}

TEST(COpenSSLCipher, Encrypt_OfNothingWithGivenIv_YieldsOneBlock) {
    Buffer out;
    getAES256()->encrypt(key32, nullptr, 0, out, false, iv16.data());
    EXPECT_EQ(out.getUsed(), 16);
}

TEST(COpenSSLCipher, Encrypt_OfNothingWithoutIv_YieldsIvAndOneBlock) {
    Buffer out;
    getAES256()->encrypt(key32, nullptr, 0, out, false, nullptr);
    ASSERT_EQ(out.getUsed(), 32);
    Buffer again;
    getAES256()->encrypt(key32, nullptr, 0, again, false, out.getData());
    const Bytes whole = toBytes(out);
    EXPECT_EQ(toBytes(again), Bytes(whole.begin() + 16, whole.end())) << "the first 16 bytes are not the IV";
}

TEST(COpenSSLCipher, Encrypt_WithoutIv_DrawsEveryByteOfTheIvAnewEachTime) {
    for (const CipherSizes& sizes : getRegisteredCiphers()) {
        SCOPED_TRACE(sizes.id);
        const ul::P<sarn::ICipher> cipher = getAnyCipher(sizes.id);
        std::vector<std::set<unsigned char>> seen(static_cast<std::size_t>(sizes.iv));
        for (int i = 0; i < 64; ++i) {
            Buffer out;
            cipher->encrypt(TestKey(sizes.key), "data", 4, out, false, nullptr);
            for (std::size_t position = 0; position < seen.size(); ++position)
                seen[position].insert(out.getData()[position]);
        }
        // Of 64 random bytes some 56 differ; fewer than 32 come up once in a number of 19 digits.
        for (const std::set<unsigned char>& values : seen)
            EXPECT_GE(values.size(), 32U);
    }
}

TEST(COpenSSLCipher, Encrypt_WithoutIv_DrawsItWhateverStoodInTheOutput) {
    for (const unsigned char left : Bytes{0x00, 0xFF}) {
        Buffer out;
        fill(out, Bytes(100, left));
        getAES256()->encrypt(key32, "data", 4, out, false, nullptr);
        EXPECT_NE(Bytes(out.getData(), out.getData() + 16), Bytes(16, left));
    }
}

TEST(COpenSSLCipher, Encrypt_AppendedWithoutIv_UsesTheIvThatItWrites) {
    Buffer out;
    fill(out, makePattern(20));
    getAES256()->encrypt(key32, "data", 4, out, true, nullptr);
    Buffer decrypted;
    getAES256()->decrypt(key32, out.getData() + 20, out.getUsed() - 20, decrypted, false, nullptr);
    EXPECT_EQ(toBytes(decrypted), toBytes("data"));
}

TEST(COpenSSLCipher, Encrypt_OfOneByte_EncryptsThatByte) {
    Buffer out;
    getAES256()->encrypt(key32, "\x7F", 1, out, false, iv16.data());
    Buffer decrypted;
    getAES256()->decrypt(key32, out.getData(), out.getUsed(), decrypted, false, iv16.data());
    EXPECT_EQ(toBytes(decrypted), Bytes(1, 0x7F));
}

TEST(COpenSSLCipher, AllOperations_WithAKeyOfAnotherSize_RefuseItBeforeAllElse) {
    const TestKey shortKey(31);
    FilledBuffer out;
    const ul::P<sarn::ICipher> cipher = getAES256();
    expectInvalidArg("COpenSSLCipher::encrypt", "invalid key size",
                     [&] { cipher->encrypt(shortKey, nullptr, 0, out, false, nullptr); });
    expectInvalidArg("COpenSSLCipher::decrypt", "invalid key size",
                     [&] { cipher->decrypt(shortKey, nullptr, 0, out, false, nullptr); });
    expectInvalidArg("COpenSSLCipher::encryptWithoutPadding", "invalid key size",
                     [&] { cipher->encryptWithoutPadding(shortKey, nullptr, 0, out, false, nullptr); });
    expectInvalidArg("COpenSSLCipher::decryptWithoutPadding", "invalid key size",
                     [&] { cipher->decryptWithoutPadding(shortKey, nullptr, 5, out, false, nullptr); });
    EXPECT_TRUE(out.isUntouched());
}

TEST(COpenSSLCipher, Decrypt_WithFewerBytesThanIv_RefusesInput) {
    for (const CipherSizes& sizes : getRegisteredCiphers()) {
        SCOPED_TRACE(sizes.id);
        FilledBuffer out;
        const Bytes data(static_cast<std::size_t>(sizes.iv - 1));
        expectInvalidArg("COpenSSLCipher::decrypt", "invalid input data size", [&] {
            getAnyCipher(sizes.id)->decrypt(TestKey(sizes.key), data.data(), sizes.iv - 1, out, false, nullptr);
        });
        EXPECT_TRUE(out.isUntouched());
    }
}

TEST(COpenSSLCipher, Decrypt_OfNothingButAnIv_FailsInTheFinalStep) {
    Buffer out;
    expectError("OpenSSL decrypt error.", [&] { getAES256()->decrypt(key32, iv16.data(), 16, out, false, nullptr); });
}

TEST(COpenSSLCipher, Decrypt_OfNothingWithGivenIv_FailsInTheFinalStep) {
    Buffer out;
    expectError("OpenSSL decrypt error.", [&] { getAES256()->decrypt(key32, nullptr, 0, out, false, iv16.data()); });
}

TEST(COpenSSLCipher, EncryptThenDecrypt_WithoutIv_GivesBackInputsOfAllLengthsAroundABlock) {
    for (const CipherSizes& sizes : getRegisteredCiphers()) {
        for (const int length : {0, 1, sizes.block - 1, sizes.block, sizes.block + 1}) {
            SCOPED_TRACE(std::string(sizes.id) + " " + std::to_string(length));
            const ul::P<sarn::ICipher> cipher = getAnyCipher(sizes.id);
            const Bytes data = makePattern(length);
            Buffer encrypted;
            cipher->encrypt(TestKey(sizes.key), data.data(), length, encrypted, false, nullptr);
            EXPECT_EQ(encrypted.getUsed(), sizes.iv + (length / sizes.block + 1) * sizes.block);
            Buffer decrypted;
            cipher->decrypt(TestKey(sizes.key), encrypted.getData(), encrypted.getUsed(), decrypted, false, nullptr);
            EXPECT_EQ(toBytes(decrypted), data);
        }
    }
}

TEST(COpenSSLCipher, EncryptWithoutPadding_Of20Bytes_CompletesTheBlockWithZeroBytes) {
    const Bytes data = makePattern(20);
    Buffer encrypted;
    getAES256()->encryptWithoutPadding(key32, data.data(), 20, encrypted, false, iv16.data());
    EXPECT_EQ(encrypted.getUsed(), 32);
    Buffer decrypted;
    getAES256()->decryptWithoutPadding(key32, encrypted.getData(), 32, decrypted, false, iv16.data());
    Bytes expected = data;
    expected.resize(32);
    EXPECT_EQ(toBytes(decrypted), expected);
}

TEST(COpenSSLCipher, DecryptWithoutPadding_OfAPartialBlock_RefusesInput) {
    FilledBuffer out;
    const Bytes data(20);
    expectInvalidArg("COpenSSLCipher::decryptWithoutPadding", "data size must be a multiple of the block size",
                     [&] { getAES256()->decryptWithoutPadding(key32, data.data(), 20, out, false, iv16.data()); });
    EXPECT_TRUE(out.isUntouched());
}

TEST(COpenSSLCipher, OperationsWithoutPadding_OfNothing_EmptyOutOrLeaveItIfAppending) {
    const ul::P<sarn::ICipher> cipher = getAES256();
    FilledBuffer out;
    cipher->decryptWithoutPadding(key32, nullptr, 0, out, true, iv16.data());
    EXPECT_TRUE(out.isUntouched());
    cipher->encryptWithoutPadding(key32, nullptr, 0, out, true, iv16.data());
    EXPECT_TRUE(out.isUntouched());
    cipher->decryptWithoutPadding(key32, nullptr, 0, out, false, iv16.data());
    EXPECT_EQ(out.getUsed(), 0);
    fill(out, {1});
    cipher->encryptWithoutPadding(key32, nullptr, 0, out, false, iv16.data());
    EXPECT_EQ(out.getUsed(), 0);
}

TEST(COpenSSLCipher, OperationsWithoutPadding_WithoutIv_RefuseItAheadOfTheSize) {
    FilledBuffer out;
    expectInvalidArg("COpenSSLCipher::encryptWithoutPadding", "IV cannot be NULL",
                     [&] { getAES256()->encryptWithoutPadding(key32, nullptr, 0, out, false, nullptr); });
    expectInvalidArg("COpenSSLCipher::decryptWithoutPadding", "IV cannot be NULL",
                     [&] { getAES256()->decryptWithoutPadding(key32, "12345", 5, out, false, nullptr); });
    EXPECT_TRUE(out.isUntouched());
}

TEST(COpenSSLCipher, Append_KeepsEarlierBytes_AndReplaceDropsThem) {
    const ul::P<sarn::ICipher> cipher = getAES256();
    FilledBuffer out;
    cipher->encrypt(key32, "data", 4, out, true, iv16.data());
    ASSERT_EQ(out.getUsed(), 3 + 16);
    EXPECT_EQ(Bytes(out.getData(), out.getData() + 3), (Bytes{9, 8, 7}));
    const Bytes ciphertext(out.getData() + 3, out.getData() + 19);

    FilledBuffer decrypted;
    cipher->decrypt(key32, ciphertext.data(), 16, decrypted, true, iv16.data());
    EXPECT_EQ(toBytes(decrypted), (Bytes{9, 8, 7, 'd', 'a', 't', 'a'}));
    cipher->decrypt(key32, ciphertext.data(), 16, decrypted, false, iv16.data());
    EXPECT_EQ(toBytes(decrypted), toBytes("data"));
}

TEST(COpenSSLCipher, Decrypt_WithAWrongKeyOfTheRightSize_EndsInADecryptError) {
    // One wrong key in 256 gives valid padding by chance; none of these does.
    Buffer encrypted;
    getAES256()->encrypt(key32, "some secret data", 16, encrypted, false, iv16.data());
    for (unsigned char i = 1; i <= 64; ++i) {
        Bytes wrong = makePattern(32);
        wrong[0] = static_cast<unsigned char>(wrong[0] ^ i);
        Buffer out;
        expectError("OpenSSL decrypt error.", [&] {
            getAES256()->decrypt(TestKey(wrong), encrypted.getData(), encrypted.getUsed(), out, false, iv16.data());
        });
    }
}

TEST(COpenSSLCipher, Decrypt_OfTruncatedCiphertext_EndsInADecryptError) {
    Buffer encrypted;
    getAES256()->encrypt(key32, "some secret data", 16, encrypted, false, nullptr);
    for (int size = 16; size < encrypted.getUsed(); ++size) {
        Buffer out;
        expectError("OpenSSL decrypt error.",
                    [&] { getAES256()->decrypt(key32, encrypted.getData(), size, out, false, nullptr); });
    }
}

TEST(COpenSSLCipher, ACipherOfTheHostsOwn_WorksThroughTheSameEngine) {
    const auto cipher = ul::make<sarn::COpenSSLCipher>(EVP_aes_192_cbc(), "aes192cbc");
    EXPECT_EQ(cipher->getKeySize(), 24);
    // NIST SP 800-38A, F.2.3 (CBC-AES192), first block
    const TestKey key(fromHex("8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b"));
    const Bytes iv = fromHex("000102030405060708090a0b0c0d0e0f");
    const Bytes data = fromHex("6bc1bee22e409f96e93d7e117393172a");
    Buffer out;
    cipher->encryptWithoutPadding(key, data.data(), 16, out, false, iv.data());
    EXPECT_EQ(toHex(toBytes(out)), "4f021db243bc633d7178183a9fa071e8");
}

TEST(COpenSSLCipher, Constructor_OfADescriptionThatItCannotWorkWith_RefusesIt) {
    const auto expectRefusal = [](const char* message, const EVP_CIPHER* description) {
        expectInvalidArg("COpenSSLCipher::COpenSSLCipher", message,
                         [&] { ul::make<sarn::COpenSSLCipher>(description, "own"); });
    };
    expectRefusal("cipher cannot be NULL", EVP_get_cipherbyname("no such cipher"));
    for (const EVP_CIPHER* const other : {EVP_aes_256_ecb(), EVP_aes_256_ctr(), EVP_aes_256_gcm(), EVP_aes_256_ofb(),
                                          EVP_aes_256_xts(), EVP_chacha20_poly1305(), EVP_enc_null()})
        expectRefusal("cipher is not in CBC mode", other);
    // CBC with a tag, which libcrypto has for some processors only.
    const EVP_CIPHER* const withTag = EVP_aes_256_cbc_hmac_sha1();
    expectRefusal(withTag ? "cipher is not in CBC mode" : "cipher cannot be NULL", withTag);
}

#if OPENSSL_VERSION_NUMBER < 0x30000000L
// Newer versions declare these functions deprecated.
TEST(COpenSSLCipher, Constructor_OfADescriptionWithAnIvThatIsTooLong_RefusesIt) {
    const std::unique_ptr<EVP_CIPHER, decltype(&EVP_CIPHER_meth_free)> description(
        EVP_CIPHER_meth_dup(EVP_aes_256_cbc()), EVP_CIPHER_meth_free);
    EVP_CIPHER_meth_set_iv_length(description.get(), EVP_MAX_IV_LENGTH);
    EXPECT_NO_THROW(ul::make<sarn::COpenSSLCipher>(description.get(), "own"));
    EVP_CIPHER_meth_set_iv_length(description.get(), EVP_MAX_IV_LENGTH + 1);
    expectInvalidArg("COpenSSLCipher::COpenSSLCipher", "IV is too long",
                     [&] { ul::make<sarn::COpenSSLCipher>(description.get(), "own"); });
}
#endif

} // namespace sarn_test
