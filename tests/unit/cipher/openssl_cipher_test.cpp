// SPDX-License-Identifier: Apache-2.0
#include "support/cipher_test_data.h"

#include <openssl/evp.h>

#include <memory>

namespace sarn_test {

namespace {

void expectSizes(sarn::ICipher& cipher, const CipherSizes& sizes) {
    SCOPED_TRACE(sizes.id);
    EXPECT_EQ(cipher.getID(), sizes.id);
    EXPECT_EQ(cipher.getKeySize(), sizes.key);
    EXPECT_EQ(cipher.getIVSize(), sizes.iv);
    EXPECT_EQ(cipher.getBlockSize(), sizes.block);
}

void expectDecryptError(const Bytes& data, const unsigned char* iv, const TestKey& key = key32) {
    Buffer out;
    expectError("OpenSSL decrypt error.",
                [&] { getAES256()->decrypt(key, data.data(), static_cast<int>(data.size()), out, false, iv); });
}

void expectDescriptionRefused(const char* message, const EVP_CIPHER* description) {
    expectInvalidArg("COpenSSLCipher::COpenSSLCipher", message,
                     [&] { ul::make<sarn::COpenSSLCipher>(description, "own"); });
}

} // namespace

TEST(COpenSSLCipher, Sizes_OfRegisteredCiphers_AreTheDocumentedOnes) {
    for (const CipherSizes& sizes : getRegisteredCiphers())
        expectSizes(*getAnyCipher(sizes.id), sizes);
}

TEST(COpenSSLCipher, IDEA_WhereLibcryptoHasIt_HasTheDocumentedSizesAndIsFoundOnceRegistered_ElseRaisesAClearError) {
    if (!hasIDEA) {
        expectError("IDEA is not available in this OpenSSL.", [] { ul::make<sarn::CCipher_IDEACBC>(); });
        return;
    }
    const auto idea = ul::make<sarn::CCipher_IDEACBC>();
    expectSizes(*idea, {"ideacbc", 16, 8, 8});
    sarn::CCipherManager manager;
    manager.addCipher(idea.get());
    EXPECT_EQ(manager.getCipher("ideacbc").get(), static_cast<sarn::ICipher*>(idea.get()));
}

TEST(COpenSSLCipher, Encrypt_OfNothing_YieldsOneBlock_AfterTheIvIfThatIsDrawn) {
    EXPECT_EQ(runAES256(encrypting, {}).size(), 16U);
    const Bytes whole = runAES256(encrypting, {}, nullptr);
    ASSERT_EQ(whole.size(), 32U);
    EXPECT_EQ(join(cut(whole, 16), runAES256(encrypting, {}, whole.data())), whole);
}

TEST(COpenSSLCipher, Encrypt_WithoutIv_DrawsEveryByteOfTheIv_ForAnyContentOfTheOutput) {
    for (const CipherSizes& sizes : getRegisteredCiphers()) {
        SCOPED_TRACE(sizes.id);
        const ul::P<sarn::ICipher> cipher = getAnyCipher(sizes.id);
        std::vector<std::set<unsigned char>> seen(static_cast<std::size_t>(sizes.iv));
        for (int i = 0; i < 64; ++i) {
            Buffer out = makeBuffer(Bytes(100, i % 2 == 0 ? 0x00 : 0xFF));
            cipher->encrypt(TestKey(sizes.key), "data", 4, out, false, nullptr);
            for (std::size_t position = 0; position < seen.size(); ++position)
                seen[position].insert(out.getData()[position]);
        }
        // About 56 of 64 random bytes differ. The probability of fewer than 32 is below 1 in 10^18.
        for (const std::set<unsigned char>& values : seen)
            EXPECT_GE(values.size(), 32U);
    }
}

TEST(COpenSSLCipher, AllOperations_WithAKeyOfAnotherSize_RefuseItFirst) {
    FilledBuffer out;
    for (const CipherOperation& operation : cipherOperations) {
        expectRefused(operation, "invalid key size", nullptr, 0, out, false, nullptr, TestKey(31));
        expectRefused(operation, "invalid key size", "12345", 5, out, false, nullptr, TestKey(33));
    }
    EXPECT_TRUE(out.isUntouched());
}

TEST(COpenSSLCipher, Decrypt_WithFewerBytesThanIv_RefusesInput) {
    for (const CipherSizes& sizes : getRegisteredCiphers()) {
        SCOPED_TRACE(sizes.id);
        FilledBuffer out;
        expectInvalidArg("COpenSSLCipher::decrypt", "invalid input data size", [&] {
            getAnyCipher(sizes.id)->decrypt(TestKey(sizes.key), iv16.data(), sizes.iv - 1, out, false, nullptr);
        });
        EXPECT_TRUE(out.isUntouched());
    }
}

TEST(COpenSSLCipher, Decrypt_OfAnIvAlone_FailsInTheFinalStep) {
    expectDecryptError(iv16, nullptr);
    expectDecryptError({}, iv16.data());
}

TEST(COpenSSLCipher, EncryptThenDecrypt_WithoutIv_RestoresInputsOfAllLengthsAroundABlock) {
    for (const CipherSizes& sizes : getRegisteredCiphers()) {
        for (const int length : {0, 1, sizes.block - 1, sizes.block, sizes.block + 1}) {
            SCOPED_TRACE(std::string(sizes.id) + " " + std::to_string(length));
            const ul::P<sarn::ICipher> cipher = getAnyCipher(sizes.id);
            const Bytes data = makePattern(length);
            FilledBuffer encrypted;
            cipher->encrypt(TestKey(sizes.key), data.data(), length, encrypted, true, nullptr);
            const int size = encrypted.getUsed() - 3;
            EXPECT_EQ(size, sizes.iv + (length / sizes.block + 1) * sizes.block);
            Buffer decrypted;
            cipher->decrypt(TestKey(sizes.key), encrypted.getData() + 3, size, decrypted, false, nullptr);
            EXPECT_EQ(toBytes(decrypted), data);
        }
    }
}

TEST(COpenSSLCipher, EncryptWithoutPadding_Of20Bytes_CompletesTheBlockWithZeroBytes) {
    const Bytes encrypted = runAES256(encryptingUnpadded, makePattern(20));
    EXPECT_EQ(encrypted.size(), 32U);
    EXPECT_EQ(runAES256(decryptingUnpadded, encrypted), join(makePattern(20), Bytes(12)));
}

TEST(COpenSSLCipher, DecryptWithoutPadding_OfAPartialBlock_RefusesInput) {
    FilledBuffer out;
    expectRefused(decryptingUnpadded, "data size must be a multiple of the block size", key32.getData(), 20, out, false,
                  iv16.data());
    EXPECT_TRUE(out.isUntouched());
}

TEST(COpenSSLCipher, OperationsWithoutPadding_OfNothing_EmptyOutOrLeaveItIfAppending) {
    for (const CipherOperation& operation : {encryptingUnpadded, decryptingUnpadded}) {
        FilledBuffer out;
        runAES256(operation, nullptr, 0, out, true, iv16.data());
        EXPECT_TRUE(out.isUntouched());
        runAES256(operation, nullptr, 0, out, false, iv16.data());
        EXPECT_EQ(out.getUsed(), 0);
    }
}

TEST(COpenSSLCipher, OperationsWithoutPadding_WithoutIv_RefuseThatBeforeTheSize) {
    FilledBuffer out;
    for (const int size : {0, 5, -1}) {
        expectRefused(encryptingUnpadded, "IV cannot be NULL", "12345", size, out, false, nullptr);
        expectRefused(decryptingUnpadded, "IV cannot be NULL", "12345", size, out, false, nullptr);
    }
    EXPECT_TRUE(out.isUntouched());
}

TEST(COpenSSLCipher, Decrypt_WithAWrongKeyOfTheRightSize_EndsInADecryptError) {
    // One wrong key in 256 gives valid padding by chance, but none of these.
    const Bytes encrypted = runAES256(encrypting, toBytes("some secret data"));
    for (unsigned char i = 1; i <= 64; ++i) {
        Bytes wrong = makePattern(32);
        wrong[0] = static_cast<unsigned char>(wrong[0] ^ i);
        expectDecryptError(encrypted, iv16.data(), TestKey(wrong));
    }
}

TEST(COpenSSLCipher, Decrypt_OfTruncatedCiphertext_EndsInADecryptError) {
    const Bytes encrypted = runAES256(encrypting, toBytes("some secret data"), nullptr);
    for (int size = 16; size < 48; ++size)
        expectDecryptError(cut(encrypted, size), nullptr);
}

TEST(COpenSSLCipher, CipherOfTheHost_WorksThroughTheSameEngine) {
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
    expectDescriptionRefused("cipher cannot be NULL", EVP_get_cipherbyname("no such cipher"));
    for (const EVP_CIPHER* const other : {EVP_aes_256_ecb(), EVP_aes_256_ctr(), EVP_aes_256_gcm(), EVP_aes_256_ofb(),
                                          EVP_aes_256_xts(), EVP_chacha20_poly1305(), EVP_enc_null()})
        expectDescriptionRefused("cipher is not in CBC mode", other);
    // CBC with a tag. libcrypto has it for some processors only.
    const EVP_CIPHER* const withTag = EVP_aes_256_cbc_hmac_sha1();
    expectDescriptionRefused(withTag ? "cipher is not in CBC mode" : "cipher cannot be NULL", withTag);
}

#if OPENSSL_VERSION_NUMBER < 0x30000000L
// Newer versions deprecate these functions.
TEST(COpenSSLCipher, Constructor_OfADescriptionWithAnIvThatIsTooLong_RefusesIt) {
    const std::unique_ptr<EVP_CIPHER, decltype(&EVP_CIPHER_meth_free)> description(
        EVP_CIPHER_meth_dup(EVP_aes_256_cbc()), EVP_CIPHER_meth_free);
    EVP_CIPHER_meth_set_iv_length(description.get(), EVP_MAX_IV_LENGTH);
    EXPECT_NO_THROW(ul::make<sarn::COpenSSLCipher>(description.get(), "own"));
    EVP_CIPHER_meth_set_iv_length(description.get(), EVP_MAX_IV_LENGTH + 1);
    expectDescriptionRefused("IV is too long", description.get());
}
#endif

} // namespace sarn_test
