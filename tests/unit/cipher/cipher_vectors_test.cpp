// SPDX-License-Identifier: Apache-2.0
// Every vector: in one call, appended, and unaligned; and the cipher that copies.
#include "support/cipher_test_data.h"

#include <openssl/evp.h>

namespace sarn_test {

namespace {

/// The SHA-256 of `bytes` as hexadecimal text, by libcrypto directly.
std::string getSHA256(const Bytes& bytes) {
    Bytes digest(32);
    if (!EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr))
        throw std::runtime_error("EVP_Digest failed");
    return toHex(digest);
}

struct CipherCase {
    std::string id;
    bool isPadded;
    Bytes key;
    Bytes iv;
    Bytes plaintext;
    Bytes decrypted; // with the zero bytes that complete the last block
    std::string ciphertext;
    bool isHashed; // `ciphertext` is its SHA-256
    std::string name;
};

CipherCase readCase(const Vector& vector) {
    CipherCase item{};
    item.id = vector.getSection();
    item.key = vector.getBytes("key");
    item.iv = vector.getBytes("iv");
    item.isHashed = vector.has("ciphertext-sha256");
    item.ciphertext = vector.getText(item.isHashed ? "ciphertext-sha256" : "ciphertext");
    item.name = vector.describe();
    return item;
}

std::vector<CipherCase> readCases() {
    std::vector<CipherCase> cases;
    for (const Vector& vector :
         readVectors("ciphers.vec", {"padding", "size", "key", "iv", "ciphertext", "ciphertext-sha256"})) {
        CipherCase item = readCase(vector);
        item.isPadded = vector.getText("padding") == "pkcs7";
        item.plaintext = item.decrypted = makePattern(vector.getInt("size"));
        if (!item.isPadded)
            item.decrypted.resize((item.plaintext.size() + item.iv.size() - 1) / item.iv.size() * item.iv.size());
        cases.push_back(item);
    }
    for (const Vector& vector : readVectors("ciphers_published.vec", {"key", "iv", "plaintext", "ciphertext"})) {
        CipherCase item = readCase(vector);
        item.plaintext = item.decrypted = vector.getBytes("plaintext");
        item.name = "published " + item.name;
        cases.push_back(item);
    }
    return cases;
}

/// The content of a buffer after an operation that found `held` in it.
Bytes run(sarn::ICipher& cipher, const CipherCase& item, bool encrypts, const unsigned char* data, std::size_t size,
          const Bytes& held = {}, bool append = false) {
    const CipherOperation& operation =
        item.isPadded ? (encrypts ? encrypting : decrypting) : (encrypts ? encryptingUnpadded : decryptingUnpadded);
    Buffer out = makeBuffer(held);
    (cipher.*operation.function)(TestKey(item.key), data, static_cast<int>(size), out, append, item.iv.data());
    return toBytes(out);
}

Bytes encrypt(sarn::ICipher& cipher, const CipherCase& item) {
    return run(cipher, item, true, item.plaintext.data(), item.plaintext.size());
}

void expectCiphertext(const CipherCase& item, const Bytes& ciphertext) {
    EXPECT_EQ(item.isHashed ? getSHA256(ciphertext) : toHex(ciphertext), item.ciphertext);
}

template <class Check>
void forEachCase(Check check) {
    std::set<std::string> seen;
    for (const CipherCase& item : readCases()) {
        if (item.id == "ideacbc" && !hasIDEA)
            continue;
        seen.insert(item.id);
        SCOPED_TRACE(item.name);
        const ul::P<sarn::ICipher> cipher = getAnyCipher(item.id);
        check(*cipher, item);
    }
    EXPECT_EQ(seen.size(), getRegisteredCiphers().size() + (hasIDEA ? 1 : 0)) << "a cipher has no vectors";
}

void run(const CipherOperation& operation, const void* data, int size, Buffer& out, bool append,
         const TestKey& key = TestKey(0), const unsigned char* iv = nullptr) {
    ((*getAnyCipher("null")).*operation.function)(key, data, size, out, append, iv);
}

} // namespace

TEST(CipherVectors, Encrypt_GivesTheCiphertextOfOtherImplementations_AlsoOfUnalignedInput) {
    forEachCase([](sarn::ICipher& cipher, const CipherCase& item) {
        expectCiphertext(item, encrypt(cipher, item));
        const Bytes shifted = join(Bytes(1), item.plaintext);
        expectCiphertext(item, run(cipher, item, true, shifted.data() + 1, item.plaintext.size()));
    });
}

TEST(CipherVectors, EncryptAndDecrypt_ComeBackToThePlaintext_AndKeepEarlierBytesOnlyIfTheyAppend) {
    forEachCase([](sarn::ICipher& cipher, const CipherCase& item) {
        const Bytes held = {1, 2, 3};
        const Bytes ciphertext = encrypt(cipher, item);
        for (const bool append : {false, true}) {
            const Bytes kept = append ? held : Bytes();
            EXPECT_TRUE(run(cipher, item, true, item.plaintext.data(), item.plaintext.size(), held, append) ==
                        join(kept, ciphertext));
            EXPECT_TRUE(run(cipher, item, false, ciphertext.data(), ciphertext.size(), held, append) ==
                        join(kept, item.decrypted));
        }
    });
}

TEST(CCipher_Null, Sizes_AreTheDocumentedOnes) {
    sarn::CCipher_Null cipher;
    EXPECT_EQ(cipher.getID(), "null");
    EXPECT_EQ(cipher.getKeySize(), 0);
    EXPECT_EQ(cipher.getIVSize(), 0);
    EXPECT_EQ(cipher.getBlockSize(), 1);
}

TEST(CCipher_Null, EveryOperation_CopiesOrAppendsTheInput_ForAnyKeyAndIv) {
    for (const CipherOperation& operation : cipherOperations) {
        Buffer out = makeBuffer(toBytes("old"));
        run(operation, "input", 5, out, true);
        EXPECT_EQ(toBytes(out), toBytes("oldinput"));
        run(operation, "input", 5, out, false, TestKey(7), makePattern(99).data());
        EXPECT_EQ(toBytes(out), toBytes("input"));
        run(operation, nullptr, 0, out, true);
        EXPECT_EQ(toBytes(out), toBytes("input"));
        run(operation, nullptr, 0, out, false);
        EXPECT_EQ(out.getUsed(), 0);
    }
}

TEST(CCipher_Null, InputInTheOutput_IsCopiedRight) {
    Buffer out = makeBuffer(toBytes("abcdef"));
    run(encrypting, out.getData() + 2, 3, out, true);
    EXPECT_EQ(toBytes(out), toBytes("abcdefcde"));
    run(encrypting, out.getData() + 4, 5, out, false);
    EXPECT_EQ(toBytes(out), toBytes("efcde"));
}

TEST(CCipher_Null, BadSizesAndTheKeyAsOutput_AreRefusedByEveryOperation_AndNothingIsWritten) {
    TestKey key(7);
    FilledBuffer out;
    for (const CipherOperation& operation : cipherOperations) {
        const auto expectRefusal = [&](const char* message, Buffer& target, int size, bool append) {
            expectInvalidArg(std::string("CCipher_Null::") + operation.name, message,
                             [&] { run(operation, "input", size, target, append, key); });
        };
        for (const bool append : {false, true}) {
            expectRefusal("invalid input data size", out, -1, append);
            expectRefusal("invalid input data size", out, INT_MIN, append);
            expectRefusal("key overlaps output", key, 5, append);
            expectRefusal("key overlaps output", key, 0, append);
        }
        expectRefusal("input data is too large", out, INT_MAX - 2, true);
    }
    EXPECT_TRUE(out.isUntouched());
    EXPECT_EQ(toBytes(key), makePattern(7));
}

} // namespace sarn_test
