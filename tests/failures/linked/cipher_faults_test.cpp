// SPDX-License-Identifier: Apache-2.0
// Every call of the cipher engine into libcrypto fails once.
#include "failures/linked/libcrypto_faults.h"
#include "support/cipher_test_data.h"

#include <openssl/err.h>

#include <climits>
#include <memory>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;
using Names = std::vector<std::string>;

const Bytes iv16 = makePattern(16);
const TestKey key32(32);

/// A cipher of its own: the registry's may be another module's.
ul::P<sarn::ICipher> makeCipher() {
    return ul::make<sarn::CCipher_AES256CBC>();
}

/// Expects that `operation` raises `message` when the call fails, and that each context was reset and freed.
template <class Operation>
void expectFailure(const char* call, int index, const char* message, Operation operation) {
    SCOPED_TRACE(std::string(call) + " " + std::to_string(index));
    LibcryptoFaults faults;
    faults.failCall(call, index);
    ERR_clear_error();
    expectError(message, operation);
    EXPECT_EQ(ERR_get_error(), 0U);
    EXPECT_EQ(faults.getCallCount("EVP_CIPHER_CTX_new"), 1);
    const int contexts = std::string(call) == "EVP_CIPHER_CTX_new" ? 0 : 1;
    EXPECT_EQ(faults.getCallCount("EVP_CIPHER_CTX_free"), contexts);
    EXPECT_EQ(faults.getCallCount("EVP_CIPHER_CTX_reset"), 2 * contexts);
    if (contexts == 1) {
        const Names calls = faults.getCalls();
        EXPECT_EQ(Names(calls.end() - 2, calls.end()), (Names{"EVP_CIPHER_CTX_reset", "EVP_CIPHER_CTX_free"}));
    }
}

} // namespace

TEST(CipherFaults, Encrypt_WhoseCallsFail_RaisesTheDocumentedErrorAndFreesItsContext) {
    const ul::P<sarn::ICipher> cipher = makeCipher();
    const auto encrypt = [&] {
        Buffer out;
        cipher->encrypt(key32, "data", 4, out, false, nullptr);
    };
    expectFailure("EVP_CIPHER_CTX_new", 0, "OpenSSL encrypt init error.", encrypt);
    expectFailure("EVP_EncryptInit", 0, "OpenSSL encrypt init error.", encrypt);
    expectFailure("EVP_EncryptUpdate", 0, "OpenSSL encrypt error.", encrypt);
    expectFailure("EVP_EncryptFinal", 0, "OpenSSL encrypt error.", encrypt);
}

TEST(CipherFaults, Decrypt_WhoseCallsFail_RaisesTheDocumentedErrorAndFreesItsContext) {
    const ul::P<sarn::ICipher> cipher = makeCipher();
    Buffer encrypted;
    cipher->encrypt(key32, "data", 4, encrypted, false, nullptr);
    const auto decrypt = [&] {
        Buffer out;
        cipher->decrypt(key32, encrypted.getData(), encrypted.getUsed(), out, false, nullptr);
    };
    expectFailure("EVP_CIPHER_CTX_new", 0, "OpenSSL encrypt init error.", decrypt);
    expectFailure("EVP_DecryptInit", 0, "OpenSSL encrypt init error.", decrypt);
    expectFailure("EVP_DecryptUpdate", 0, "OpenSSL decrypt error.", decrypt);
    expectFailure("EVP_DecryptFinal", 0, "OpenSSL decrypt error.", decrypt);
}

TEST(CipherFaults, EncryptWithoutPadding_WhoseCallsFail_RaisesTheDocumentedErrorAndFreesItsContext) {
    const ul::P<sarn::ICipher> cipher = makeCipher();
    const auto encrypt = [&] {
        Buffer out;
        cipher->encryptWithoutPadding(key32, "data", 4, out, false, iv16.data());
    };
    expectFailure("EVP_CIPHER_CTX_new", 0, "OpenSSL encrypt init error.", encrypt);
    expectFailure("EVP_EncryptInit", 0, "OpenSSL encrypt init error.", encrypt);
    expectFailure("EVP_CIPHER_CTX_set_padding", 0, "OpenSSL encrypt init error.", encrypt);
    expectFailure("EVP_EncryptUpdate", 0, "OpenSSL encrypt error.", encrypt);
    expectFailure("EVP_EncryptUpdate", 1, "OpenSSL encrypt error.", encrypt);
    expectFailure("EVP_EncryptFinal", 0, "OpenSSL encrypt error.", encrypt);
}

TEST(CipherFaults, DecryptWithoutPadding_WhoseCallsFail_RaisesTheDocumentedErrorAndFreesItsContext) {
    const ul::P<sarn::ICipher> cipher = makeCipher();
    const auto decrypt = [&] {
        Buffer out;
        cipher->decryptWithoutPadding(key32, iv16.data(), 16, out, false, iv16.data());
    };
    expectFailure("EVP_CIPHER_CTX_new", 0, "OpenSSL encrypt init error.", decrypt);
    expectFailure("EVP_DecryptInit", 0, "OpenSSL encrypt init error.", decrypt);
    expectFailure("EVP_CIPHER_CTX_set_padding", 0, "OpenSSL encrypt init error.", decrypt);
    expectFailure("EVP_DecryptUpdate", 0, "OpenSSL decrypt error.", decrypt);
    expectFailure("EVP_DecryptFinal", 0, "OpenSSL decrypt error.", decrypt);
}

TEST(CipherFaults, OperationsWithoutPadding_ThatWriteTooLittle_RaiseAnErrorWithBothSizes) {
    const ul::P<sarn::ICipher> cipher = makeCipher();
    Buffer out;
    LibcryptoFaults faults;
    faults.shortenOutput("EVP_EncryptFinal", 3);
    faults.shortenOutput("EVP_DecryptFinal", 16);
    expectError("OpenSSL encrypt error: output size does not match expected value",
                {"outSize", "29", "expectedOutSize", "32"},
                [&] { cipher->encryptWithoutPadding(key32, "12345678901234567890", 20, out, false, iv16.data()); });
    expectError("OpenSSL decrypt error: decrypted size does not match expected value",
                {"outSize", "0", "expectedOutSize", "16"},
                [&] { cipher->decryptWithoutPadding(key32, iv16.data(), 16, out, false, iv16.data()); });
    EXPECT_EQ(faults.getCallCount("EVP_CIPHER_CTX_free"), 2);
}

TEST(CipherFaults, FailedOperationWithoutPadding_LeavesTheFullExpectedSizeInOut) {
    const ul::P<sarn::ICipher> cipher = makeCipher();
    Buffer out;
    LibcryptoFaults faults;
    faults.failCall("EVP_EncryptInit");
    EXPECT_THROW(cipher->encryptWithoutPadding(key32, "data", 4, out, false, iv16.data()), ul::CError);
    EXPECT_EQ(out.getUsed(), 16);
    faults.failCall("EVP_DecryptUpdate");
    EXPECT_THROW(cipher->decryptWithoutPadding(key32, makePattern(48).data(), 48, out, false, iv16.data()), ul::CError);
    EXPECT_EQ(out.getUsed(), 48);
}

TEST(CipherFaults, SuccessfulOperations_CallLibcryptoInTheDocumentedOrder) {
    const ul::P<sarn::ICipher> cipher = makeCipher();
    const auto record = [](auto operation) {
        LibcryptoFaults faults;
        Buffer out;
        operation(out);
        return faults.getCalls();
    };
    const Names encrypt = record([&](Buffer& out) { cipher->encrypt(key32, "data", 4, out, false, nullptr); });
    EXPECT_EQ(encrypt, (Names{"EVP_CIPHER_CTX_new", "EVP_CIPHER_CTX_reset", "EVP_EncryptInit", "EVP_EncryptUpdate",
                              "EVP_EncryptFinal", "EVP_CIPHER_CTX_reset", "EVP_CIPHER_CTX_free"}));
    const Names empty = record([&](Buffer& out) { cipher->encrypt(key32, nullptr, 0, out, false, nullptr); });
    EXPECT_EQ(empty, (Names{"EVP_CIPHER_CTX_new", "EVP_CIPHER_CTX_reset", "EVP_EncryptInit", "EVP_EncryptFinal",
                            "EVP_CIPHER_CTX_reset", "EVP_CIPHER_CTX_free"}));
    const Names unpadded =
        record([&](Buffer& out) { cipher->encryptWithoutPadding(key32, iv16.data(), 16, out, false, iv16.data()); });
    EXPECT_EQ(unpadded,
              (Names{"EVP_CIPHER_CTX_new", "EVP_CIPHER_CTX_reset", "EVP_EncryptInit", "EVP_CIPHER_CTX_set_padding",
                     "EVP_EncryptUpdate", "EVP_EncryptFinal", "EVP_CIPHER_CTX_reset", "EVP_CIPHER_CTX_free"}));
    const Names twoUpdates =
        record([&](Buffer& out) { cipher->encryptWithoutPadding(key32, iv16.data(), 15, out, false, iv16.data()); });
    EXPECT_EQ(twoUpdates, (Names{"EVP_CIPHER_CTX_new", "EVP_CIPHER_CTX_reset", "EVP_EncryptInit",
                                 "EVP_CIPHER_CTX_set_padding", "EVP_EncryptUpdate", "EVP_EncryptUpdate",
                                 "EVP_EncryptFinal", "EVP_CIPHER_CTX_reset", "EVP_CIPHER_CTX_free"}));
    Buffer padded;
    cipher->encrypt(key32, "data", 4, padded, false, iv16.data());
    const Names decrypt =
        record([&](Buffer& out) { cipher->decrypt(key32, padded.getData(), 16, out, false, iv16.data()); });
    EXPECT_EQ(decrypt, (Names{"EVP_CIPHER_CTX_new", "EVP_CIPHER_CTX_reset", "EVP_DecryptInit", "EVP_DecryptUpdate",
                              "EVP_DecryptFinal", "EVP_CIPHER_CTX_reset", "EVP_CIPHER_CTX_free"}));
    const Names decryptUnpadded =
        record([&](Buffer& out) { cipher->decryptWithoutPadding(key32, iv16.data(), 16, out, false, iv16.data()); });
    EXPECT_EQ(decryptUnpadded,
              (Names{"EVP_CIPHER_CTX_new", "EVP_CIPHER_CTX_reset", "EVP_DecryptInit", "EVP_CIPHER_CTX_set_padding",
                     "EVP_DecryptUpdate", "EVP_DecryptFinal", "EVP_CIPHER_CTX_reset", "EVP_CIPHER_CTX_free"}));
    const Names nothing =
        record([&](Buffer& out) { cipher->encryptWithoutPadding(key32, nullptr, 0, out, false, iv16.data()); });
    EXPECT_TRUE(nothing.empty());
    const Names alsoNothing =
        record([&](Buffer& out) { cipher->decryptWithoutPadding(key32, nullptr, 0, out, false, iv16.data()); });
    EXPECT_TRUE(alsoNothing.empty());
}

TEST(CipherFaults, Decrypt_OfNothing_UpdatesAllTheSame_AndHandsOverNoNullPointer) {
    const ul::P<sarn::ICipher> cipher = makeCipher();
    LibcryptoFaults faults;
    Buffer out;
    EXPECT_THROW(cipher->decrypt(key32, nullptr, 0, out, false, iv16.data()), ul::CError);
    EXPECT_EQ(faults.getCallCount("EVP_DecryptUpdate"), 1);
    EXPECT_EQ(faults.getCallCount("EVP_DecryptUpdate of a null pointer"), 0);
}

TEST(CipherFaults, DecryptWithoutPadding_WhoseInitFails_LeavesTheUsedSizeOfOut) {
    const ul::P<sarn::ICipher> cipher = makeCipher();
    Buffer out;
    fill(out, {9, 8, 7});
    LibcryptoFaults faults;
    faults.failCall("EVP_DecryptInit");
    EXPECT_THROW(cipher->decryptWithoutPadding(key32, iv16.data(), 16, out, false, iv16.data()), ul::CError);
    EXPECT_EQ(toBytes(out), (Bytes{9, 8, 7}));
}

TEST(CipherFaults, Decrypt_OfTheLargestCiphertexts_IsNotRefused) {
    const ul::P<sarn::ICipher> cipher = makeCipher();
    // It ends where libcrypto would read that much; by then there is room for the result.
    const std::unique_ptr<unsigned char[]> data(new unsigned char[INT_MAX]);
    for (const int before : {0, 15}) {
        Buffer out;
        fill(out, makePattern(before));
        LibcryptoFaults faults;
        faults.failCall("EVP_DecryptUpdate");
        expectError("OpenSSL decrypt error.",
                    [&] { cipher->decrypt(key32, data.get(), INT_MAX - 15, out, true, iv16.data()); });
        EXPECT_EQ(out.getAllocated(), INT_MAX);
    }
}

} // namespace sarn_test
