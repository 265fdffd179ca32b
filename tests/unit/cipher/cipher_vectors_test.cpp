// SPDX-License-Identifier: Apache-2.0
// Every vector, whole, appended, unaligned and by a copy of the cipher, both ways.
#include "support/cipher_test_data.h"

#include <openssl/evp.h>

#include <set>
#include <stdexcept>

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

std::vector<CipherCase> readCases() {
    std::vector<CipherCase> cases;
    for (const Vector& vector :
         readVectors("ciphers.vec", {"padding", "size", "key", "iv", "ciphertext", "ciphertext-sha256"})) {
        CipherCase item{};
        item.id = vector.getSection();
        item.isPadded = vector.getText("padding") == "pkcs7";
        item.key = vector.getBytes("key");
        item.iv = vector.getBytes("iv");
        item.plaintext = makePattern(vector.getInt("size"));
        item.decrypted = item.plaintext;
        if (!item.isPadded)
            item.decrypted.resize((item.plaintext.size() + item.iv.size() - 1) / item.iv.size() * item.iv.size());
        item.isHashed = vector.has("ciphertext-sha256");
        item.ciphertext = vector.getText(item.isHashed ? "ciphertext-sha256" : "ciphertext");
        item.name = vector.describe();
        cases.push_back(item);
    }
    for (const Vector& vector : readVectors("ciphers_published.vec", {"key", "iv", "plaintext", "ciphertext"})) {
        CipherCase item{};
        item.id = vector.getSection();
        item.key = vector.getBytes("key");
        item.iv = vector.getBytes("iv");
        item.plaintext = item.decrypted = vector.getBytes("plaintext");
        item.ciphertext = vector.getText("ciphertext");
        item.name = "published " + vector.describe();
        cases.push_back(item);
    }
    return cases;
}

void encrypt(sarn::ICipher& cipher, const CipherCase& item, const unsigned char* data, ul::TBuffer<unsigned char>& out,
             bool append) {
    const TestKey key(item.key);
    const int size = static_cast<int>(item.plaintext.size());
    if (item.isPadded)
        cipher.encrypt(key, data, size, out, append, item.iv.data());
    else
        cipher.encryptWithoutPadding(key, data, size, out, append, item.iv.data());
}

void decrypt(sarn::ICipher& cipher, const CipherCase& item, const Bytes& data, ul::TBuffer<unsigned char>& out,
             bool append) {
    const TestKey key(item.key);
    const int size = static_cast<int>(data.size());
    if (item.isPadded)
        cipher.decrypt(key, data.data(), size, out, append, item.iv.data());
    else
        cipher.decryptWithoutPadding(key, data.data(), size, out, append, item.iv.data());
}

std::string describeResult(const CipherCase& item, const Bytes& ciphertext) {
    return item.isHashed ? getSHA256(ciphertext) : toHex(ciphertext);
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

} // namespace

TEST(CipherVectors, Encrypt_GivesTheCiphertextOfOtherImplementations) {
    forEachCase([](sarn::ICipher& cipher, const CipherCase& item) {
        ul::TBuffer<unsigned char> out;
        encrypt(cipher, item, item.plaintext.data(), out, false);
        EXPECT_EQ(describeResult(item, toBytes(out)), item.ciphertext);
    });
}

TEST(CipherVectors, Decrypt_GivesThePlaintextBack) {
    forEachCase([](sarn::ICipher& cipher, const CipherCase& item) {
        ul::TBuffer<unsigned char> encrypted;
        encrypt(cipher, item, item.plaintext.data(), encrypted, false);
        ul::TBuffer<unsigned char> out;
        decrypt(cipher, item, toBytes(encrypted), out, false);
        EXPECT_TRUE(toBytes(out) == item.decrypted);
    });
}

TEST(CipherVectors, EncryptAndDecrypt_AppendedBehindOtherBytes_KeepThem) {
    forEachCase([](sarn::ICipher& cipher, const CipherCase& item) {
        const Bytes prefix = {1, 2, 3};
        ul::TBuffer<unsigned char> out;
        fill(out, prefix);
        encrypt(cipher, item, item.plaintext.data(), out, true);
        const Bytes result = toBytes(out);
        ASSERT_GE(result.size(), prefix.size());
        EXPECT_EQ(Bytes(result.begin(), result.begin() + 3), prefix);
        const Bytes ciphertext(result.begin() + 3, result.end());
        EXPECT_EQ(describeResult(item, ciphertext), item.ciphertext);

        ul::TBuffer<unsigned char> decrypted;
        fill(decrypted, prefix);
        decrypt(cipher, item, ciphertext, decrypted, true);
        Bytes expected = prefix;
        expected.insert(expected.end(), item.decrypted.begin(), item.decrypted.end());
        EXPECT_TRUE(toBytes(decrypted) == expected);
    });
}

TEST(CipherVectors, Encrypt_OfUnalignedInput_GivesTheSameCiphertext) {
    forEachCase([](sarn::ICipher& cipher, const CipherCase& item) {
        Bytes shifted(1);
        shifted.insert(shifted.end(), item.plaintext.begin(), item.plaintext.end());
        ul::TBuffer<unsigned char> out;
        encrypt(cipher, item, shifted.data() + 1, out, false);
        EXPECT_EQ(describeResult(item, toBytes(out)), item.ciphertext);
    });
}

TEST(CipherVectors, Encrypt_ByACopyWhoseSourceIsGone_GivesTheSameCiphertext) {
    forEachCase([](sarn::ICipher& cipher, const CipherCase& item) {
        const auto* const source = dynamic_cast<const sarn::COpenSSLCipher*>(&cipher);
        ASSERT_NE(source, nullptr);
        ul::P<sarn::COpenSSLCipher> first = ul::make<sarn::COpenSSLCipher>(*source);
        const ul::P<sarn::COpenSSLCipher> copy = ul::make<sarn::COpenSSLCipher>(*first);
        first = nullptr;
        ul::TBuffer<unsigned char> out;
        encrypt(*copy, item, item.plaintext.data(), out, false);
        EXPECT_EQ(describeResult(item, toBytes(out)), item.ciphertext);
    });
}

} // namespace sarn_test
