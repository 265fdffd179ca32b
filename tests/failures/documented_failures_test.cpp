// SPDX-License-Identifier: Apache-2.0
// Each operation's calls of libcrypto in their order, and the error that the failure of each ends in.
#include "failures/call_watch.h"
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"
#include "support/key_files.h"

#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"
#include "sarn/signature.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>

namespace sarn_test {

namespace {

using sarn::ICipher;
using Buffer = ul::TBuffer<unsigned char>;

const Bytes pattern = makePattern(48);

/// One call that an operation makes.
struct Step {
    const char* call;
    /// The error that its failure ends in; null if it cannot fail or need not be noticed.
    const char* error = nullptr;
    /// The calls that are made after it failed.
    const char* then = "";
    /// The operation that an argument error names; null for any other error.
    const char* where = nullptr;
};

struct Operation {
    const char* name;
    std::function<void()> run;
    std::vector<Step> steps;
};

/// For messages of failures.
void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

void encrypt(int size) {
    Buffer out;
    ul::make<sarn::CCipher_AES256CBC>()->encrypt(TestKey(32), pattern.data(), size, out, false, nullptr);
}

void runUnpadded(decltype(&ICipher::encryptWithoutPadding) operation, int size) {
    Buffer out;
    const ul::P<ICipher> cipher = ul::make<sarn::CCipher_AES256CBC>();
    (cipher.get()->*operation)(TestKey(32), pattern.data(), size, out, false, pattern.data());
}

void decrypt() {
    // An initialisation vector, and under it nothing.
    const TestKey key(fromHex("a278ea0f436b33751785f832650fbcd8eb00aa4998591b36ee088003b17fbeb3"));
    const Bytes encrypted = fromHex("620e768b1c1cb474fd6ac1c5747aea8a82bdbea929a50e68b9355ed5455d0b6c");
    Buffer out;
    ul::make<sarn::CCipher_AES256CBC>()->decrypt(key, encrypted.data(), 32, out, false, nullptr);
}

void digest() {
    ul::make<sarn::CDigestType_MD5>()->createDigest()->update("abc", 3);
}

void encode() {
    sarn::base64Encode("hello", 5, true, true);
}

void decode() {
    Buffer out;
    sarn::base64Decode("aGVsbG8=", out);
}

void authenticate() {
    Buffer out;
    sarn::calcHMAC_SHA1(out, "x", 1, "k", 1);
}

void derive() {
    unsigned char key[20];
    sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("password", 8, "salt", 4, 1, 20, key);
}

void sign() {
    static const ul::String key = readKey("rsa1024");
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(key, "");
    signer->update("abc", 3);
    Buffer signature;
    signer->finish(signature);
}

void verify() {
    static const ul::String key = readPublicKey("rsa1024");
    const ul::P<sarn::IVerifier> verifier = sarn::createRSA_SHA1()->beginVerify(key);
    verifier->update("abc", 3);
    verifier->finish("x", 1);
}

constexpr char cipherInit[] = "OpenSSL encrypt init error.";
constexpr char encryptError[] = "OpenSSL encrypt error.";
constexpr char decryptError[] = "OpenSSL decrypt error.";
constexpr char cipherEnd[] = "EVP_CIPHER_CTX_reset EVP_CIPHER_CTX_free";
constexpr char encodeError[] = "Internal error: error during base64 encode.";
constexpr char decodeError[] = "Internal error: error during base64 decode.";
constexpr char corrupted[] = "OpenSSL key corrupted.";
constexpr char signInit[] = "OpenSSL sign init error.";
constexpr char signError[] = "OpenSSL sign error.";
constexpr char verifyInit[] = "OpenSSL verify init error.";
constexpr char sessionEnd[] = "EVP_MD_CTX_reset EVP_MD_CTX_free EVP_PKEY_free";

/// The steps of an operation that makes a context, does `between` with it, whatever fails there, and frees it.
std::vector<Step> inCipherContext(std::vector<Step> between) {
    for (Step& step : between)
        step.then = cipherEnd;
    between.insert(between.begin(), {{"EVP_CIPHER_CTX_new", cipherInit}, {"EVP_CIPHER_CTX_reset"}});
    between.insert(between.end(), {{"EVP_CIPHER_CTX_reset"}, {"EVP_CIPHER_CTX_free"}});
    return between;
}

// A session whose construction fails leaves its context, reset if the key was at fault, to nobody.
// clang-format off
const std::vector<Operation> operations = {
    {"Encrypt", [] { encrypt(4); },
     inCipherContext({{"EVP_EncryptInit", cipherInit},
                      {"EVP_EncryptUpdate", encryptError},
                      {"EVP_EncryptFinal", encryptError}})},
    {"EncryptNothing", [] { encrypt(0); },
     inCipherContext({{"EVP_EncryptInit", cipherInit}, {"EVP_EncryptFinal", encryptError}})},
    {"Decrypt", decrypt, inCipherContext({{"EVP_DecryptInit", cipherInit},
                                          {"EVP_DecryptUpdate", decryptError},
                                          {"EVP_DecryptFinal", decryptError}})},
    {"EncryptBlockWithoutPadding", [] { runUnpadded(&ICipher::encryptWithoutPadding, 16); },
     inCipherContext({{"EVP_EncryptInit", cipherInit},
                      {"EVP_CIPHER_CTX_set_padding", cipherInit},
                      {"EVP_EncryptUpdate", encryptError},
                      {"EVP_EncryptFinal", encryptError}})},
    {"EncryptPartOfABlockWithoutPadding", [] { runUnpadded(&ICipher::encryptWithoutPadding, 4); },
     inCipherContext({{"EVP_EncryptInit", cipherInit},
                      {"EVP_CIPHER_CTX_set_padding", cipherInit},
                      {"EVP_EncryptUpdate", encryptError},
                      {"EVP_EncryptUpdate", encryptError},
                      {"EVP_EncryptFinal", encryptError}})},
    {"DecryptWithoutPadding", [] { runUnpadded(&ICipher::decryptWithoutPadding, 16); },
     inCipherContext({{"EVP_DecryptInit", cipherInit},
                      {"EVP_CIPHER_CTX_set_padding", cipherInit},
                      {"EVP_DecryptUpdate", decryptError},
                      {"EVP_DecryptFinal", decryptError}})},
    {"EncryptNothingWithoutPadding", [] { runUnpadded(&ICipher::encryptWithoutPadding, 0); }, {}},
    {"DecryptNothingWithoutPadding", [] { runUnpadded(&ICipher::decryptWithoutPadding, 0); }, {}},
    {"Digest", digest,
     {{"MD5_Init", "Error initializing OpenSSL digest."},
      {"MD5_Update", "Error updating OpenSSL digest.", "MD5_Final"}, {"MD5_Final"}}},
    {"Base64Encode", encode,
     {{"BIO_new", encodeError, "BIO_new BIO_free_all"},
      {"BIO_new", encodeError, "BIO_free_all"},
      {"BIO_write", encodeError, "BIO_free_all"},
      {"BIO_ctrl", encodeError, "BIO_free_all"},
      {"BIO_ctrl", encodeError, "BIO_free_all"},
      {"BIO_free_all"}}},
    {"Base64Decode", decode,
     {{"BIO_new_mem_buf", decodeError, "BIO_new BIO_free_all"},
      {"BIO_new", decodeError, "BIO_free_all"},
      {"BIO_read", "invalid base64 data", "BIO_free_all", "base64Decode"},
      {"BIO_free_all"}}},
    {"CalcHMAC", authenticate, {{"HMAC", "Error computing HMAC digest."}}},
    {"DeriveKey", derive, {{"PKCS5_PBKDF2_HMAC_SHA1", "Error deriving cryptographic key from password."}}},
    {"NewKeyCache", [] { ul::make<sarn::CPasswordKeyCache>(ul::TCryptBuffer<char>()); }, {}},
    {"Sign", sign,
     {{"EVP_MD_CTX_new", signInit},
      {"EVP_DigestInit", signInit},
      {"BIO_new_mem_buf", corrupted, "PEM_read_bio_PrivateKey EVP_MD_CTX_reset"},
      {"PEM_read_bio_PrivateKey", corrupted, "BIO_free_all EVP_MD_CTX_reset"},
      {"BIO_free_all"},
      {"EVP_DigestUpdate", signError, sessionEnd},
      {"EVP_SignFinal", signError, sessionEnd},
      {"EVP_MD_CTX_reset"},
      {"EVP_MD_CTX_free"},
      {"EVP_PKEY_free"}}},
    {"Verify", verify,
     {{"EVP_MD_CTX_new", verifyInit},
      {"EVP_DigestInit", verifyInit},
      {"BIO_new_mem_buf", corrupted, "PEM_read_bio_PUBKEY EVP_MD_CTX_reset"},
      {"PEM_read_bio_PUBKEY", corrupted, "BIO_free_all EVP_MD_CTX_reset"},
      {"BIO_free_all"},
      {"EVP_DigestUpdate", "OpenSSL verify update error.", sessionEnd},
      {"EVP_VerifyFinal", "OpenSSL verify error.", sessionEnd},
      {"EVP_MD_CTX_reset"},
      {"EVP_MD_CTX_free"},
      {"EVP_PKEY_free"}}},
};
// clang-format on

/// The names of the first `count` steps.
std::string list(const std::vector<Step>& steps, std::size_t count) {
    std::string names;
    for (std::size_t i = 0; i < count; ++i)
        names.append(names.empty() ? "" : " ").append(steps[i].call);
    return names;
}

class DocumentedFailures : public testing::TestWithParam<Operation> {
protected:
    // What is called once in a process is called before.
    void SetUp() override { GetParam().run(); }

    const std::vector<Step>& m_steps = GetParam().steps;

    /// Lets one step fail.
    void expectFailure(std::size_t index) const {
        const Step& step = m_steps[index];
        const auto earlier = std::count_if(m_steps.begin(), m_steps.begin() + static_cast<std::ptrdiff_t>(index),
                                           [&](const Step& other) { return std::string(other.call) == step.call; });
        CallWatch watch;
        watch.fail(step.call, static_cast<int>(earlier));
        if (step.where)
            expectInvalidArg(step.where, step.error, GetParam().run);
        else
            expectError(step.error, GetParam().run);
        const std::string then = step.then;
        EXPECT_EQ(watch.getLibcryptoCalls(), list(m_steps, index + 1) + (then.empty() ? "" : " ") + then);
    }
};

} // namespace

TEST_P(DocumentedFailures, OfNoCall_AreTheCallsInTheirOrder) {
    CallWatch watch;
    GetParam().run();
    EXPECT_EQ(watch.getLibcryptoCalls(), list(m_steps, m_steps.size()));
}

TEST_P(DocumentedFailures, OfEachCall_RaiseItsErrorAndFreeWhatWasMade) {
    for (std::size_t index = 0; index < m_steps.size(); ++index) {
        SCOPED_TRACE(std::string(m_steps[index].call) + ", call " + std::to_string(index) + ", fails");
        if (m_steps[index].error)
            expectFailure(index);
    }
}

INSTANTIATE_TEST_SUITE_P(All, DocumentedFailures, testing::ValuesIn(operations),
                         [](const auto& operation) { return std::string(operation.param.name); });

} // namespace sarn_test
