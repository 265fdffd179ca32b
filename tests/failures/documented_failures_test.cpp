// SPDX-License-Identifier: Apache-2.0
// Each operation's calls of libcrypto in their order, and the consequences of the failure of each: the error, the calls
// that follow, and the used size of the output.
#include "failures/call_watch.h"
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"
#include "support/key_files.h"
#include "support/password_keys.h"

#include "sarn/signature.h"

#include <openssl/opensslv.h>

namespace sarn_test {

namespace {

using sarn::ICipher;

const Bytes pattern = makePattern(48);
/// The used size of the output before an operation.
constexpr int unchanged = 3;

struct Step {
    const char* call;
    /// The error of its failure; null if it cannot fail or its failure may pass unnoticed.
    const char* error = nullptr;
    /// The calls after it has failed.
    std::string then = "";
    /// The used size of the output after it has failed.
    int used = unchanged;
    /// The operation that an argument error names; null for any other error.
    const char* where = nullptr;
};

using Steps = std::vector<Step>;

struct Operation : Row {
    std::function<void(Buffer& out)> run;
    Steps steps;
};

void encrypt(Buffer& out, int size) {
    ul::make<sarn::CCipher_AES256CBC>()->encrypt(TestKey(32), pattern.data(), size, out, false, nullptr);
}

/// Any bytes are a plaintext and a ciphertext here, because nothing is padded.
template <int size, decltype(&ICipher::encrypt) operation>
void runUnpadded(Buffer& out) {
    const ul::P<ICipher> cipher = ul::make<sarn::CCipher_AES256CBC>();
    (cipher.get()->*operation)(TestKey(32), pattern.data(), size, out, false, pattern.data());
}

void decrypt(Buffer& out) {
    // An IV and the ciphertext of no bytes.
    const TestKey key(fromHex("a278ea0f436b33751785f832650fbcd8eb00aa4998591b36ee088003b17fbeb3"));
    const Bytes encrypted = fromHex("620e768b1c1cb474fd6ac1c5747aea8a82bdbea929a50e68b9355ed5455d0b6c");
    ul::make<sarn::CCipher_AES256CBC>()->decrypt(key, encrypted.data(), 32, out, false, nullptr);
}

void finishTwice(Buffer&) {
    const ul::P<sarn::IDigest> digest = createDigest("md5");
    digest->finish();
    digest->finish();
}

/// A digest whose state says that it was never initialised, so it cannot be finished.
ul::P<sarn::IDigest> loadNotInitialized() {
    static Bytes state = getRunningState("md5");
    state.at(state.size() - 2) = 0;
    const ul::P<sarn::IDigest> digest = createDigest("md5");
    loadState(*digest, state);
    return digest;
}

void sign(Buffer& out) {
    static const ul::String key = readKey("rsa1024");
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(key, "");
    signer->update("abc", 3);
    signer->finish(out);
}

void verify(Buffer&) {
    static const ul::String key = readPublicKey("rsa1024");
    const ul::P<sarn::IVerifier> verifier = sarn::createRSA_SHA1()->beginVerify(key);
    verifier->update("abc", 3);
    verifier->finish("x", 1);
}

constexpr char cipherInit[] = "OpenSSL encrypt init error.";
constexpr char encryptError[] = "OpenSSL encrypt error.";
constexpr char decryptError[] = "OpenSSL decrypt error.";
constexpr char digestInit[] = "Error initializing OpenSSL digest.";
constexpr char digestEnd[] = "Error finalizing OpenSSL digest.";
constexpr char encodeError[] = "Internal error: error during base64 encode.";
constexpr char decodeError[] = "Internal error: error during base64 decode.";

/// The steps of an operation that makes a context, uses it in the steps `between`, and frees it whichever step fails.
/// `used` is the used size if there is no context.
Steps inCipherContext(int used, Steps between) {
    for (Step& step : between)
        step.then = "EVP_CIPHER_CTX_reset EVP_CIPHER_CTX_free";
    between.insert(between.begin(), {{"EVP_CIPHER_CTX_new", cipherInit, "", used}, {"EVP_CIPHER_CTX_reset"}});
    between.insert(between.end(), {{"EVP_CIPHER_CTX_reset"}, {"EVP_CIPHER_CTX_free"}});
    return between;
}

/// The steps of signing or verifying. A session whose construction fails leaks its context, and resets it before if the
/// key is at fault.
Steps inSession(const char* initError, const char* readKey, const char* updateError, const Step& last) {
    static constexpr char corrupted[] = "OpenSSL key corrupted.";
    constexpr char end[] = "EVP_MD_CTX_reset EVP_MD_CTX_free EVP_PKEY_free";
    return {{"EVP_MD_CTX_new", initError},
            {"EVP_DigestInit", initError},
            {"BIO_new_mem_buf", corrupted, std::string(readKey) + " EVP_MD_CTX_reset"},
            {readKey, corrupted, "BIO_free_all EVP_MD_CTX_reset"},
            {"BIO_free_all"},
            {"EVP_DigestUpdate", updateError, end},
            {last.call, last.error, end, last.used},
            {"EVP_MD_CTX_reset"},
            {"EVP_MD_CTX_free"},
            {"EVP_PKEY_free"}};
}

constexpr char hmacError[] = "Error computing HMAC digest.";
#if OPENSSL_VERSION_NUMBER >= 0x30000000L
const Steps authentication = {{"HMAC_CTX_new", hmacError},
                              {"HMAC_Init_ex", hmacError, "HMAC_CTX_free"},
                              {"HMAC_Update", hmacError, "HMAC_CTX_free"},
                              {"HMAC_Final", hmacError, "HMAC_CTX_free"},
                              {"HMAC_CTX_free"}};
#else
const Steps authentication = {{"HMAC", hmacError}};
#endif
const Steps encoding = {{"BIO_new", encodeError, "BIO_new BIO_free_all"}, {"BIO_new", encodeError, "BIO_free_all"},
                        {"BIO_write", encodeError, "BIO_free_all"},       {"BIO_ctrl", encodeError, "BIO_free_all"},
                        {"BIO_ctrl", encodeError, "BIO_free_all"},        {"BIO_free_all"}};

// clang-format off
const std::vector<Operation> operations = {
    {"Encrypt", [](Buffer& out) { encrypt(out, 4); },
     inCipherContext(unchanged, {{"EVP_EncryptInit", cipherInit},
                                 {"EVP_EncryptUpdate", encryptError},
                                 {"EVP_EncryptFinal", encryptError, "", 16}})},
    {"EncryptNothing", [](Buffer& out) { encrypt(out, 0); },
     inCipherContext(unchanged, {{"EVP_EncryptInit", cipherInit}, {"EVP_EncryptFinal", encryptError, "", 16}})},
    {"Decrypt", decrypt, inCipherContext(unchanged, {{"EVP_DecryptInit", cipherInit},
                                                     {"EVP_DecryptUpdate", decryptError},
                                                     {"EVP_DecryptFinal", decryptError, "", 0}})},
    {"EncryptBlockWithoutPadding", runUnpadded<16, &ICipher::encryptWithoutPadding>,
     inCipherContext(16, {{"EVP_EncryptInit", cipherInit, "", 16},
                          {"EVP_CIPHER_CTX_set_padding", cipherInit, "", 16},
                          {"EVP_EncryptUpdate", encryptError, "", 16},
                          {"EVP_EncryptFinal", encryptError, "", 16}})},
    {"EncryptPartOfABlockWithoutPadding", runUnpadded<4, &ICipher::encryptWithoutPadding>,
     inCipherContext(16, {{"EVP_EncryptInit", cipherInit, "", 16},
                          {"EVP_CIPHER_CTX_set_padding", cipherInit, "", 16},
                          {"EVP_EncryptUpdate", encryptError, "", 16},
                          {"EVP_EncryptUpdate", encryptError, "", 16},
                          {"EVP_EncryptFinal", encryptError, "", 16}})},
    {"DecryptWithoutPadding", runUnpadded<48, &ICipher::decryptWithoutPadding>,
     inCipherContext(unchanged, {{"EVP_DecryptInit", cipherInit},
                                 {"EVP_CIPHER_CTX_set_padding", cipherInit},
                                 {"EVP_DecryptUpdate", decryptError, "", 48},
                                 {"EVP_DecryptFinal", decryptError, "", 48}})},
    {"EncryptNothingWithoutPadding", runUnpadded<0, &ICipher::encryptWithoutPadding>, {}},
    {"DecryptNothingWithoutPadding", runUnpadded<0, &ICipher::decryptWithoutPadding>, {}},
    {"DigestUpdate", [](Buffer&) { createDigest("md5")->update("abc", 3); },
     {{"MD5_Init", digestInit}, {"MD5_Update", "Error updating OpenSSL digest.", "MD5_Final"}, {"MD5_Final"}}},
    {"DigestReset", [](Buffer&) { createDigest("md5")->reset(); },
     {{"MD5_Init", digestInit}, {"MD5_Final", digestEnd, "MD5_Final"}, {"MD5_Init", digestInit}, {"MD5_Final"}}},
    {"DigestFinishedTwice", finishTwice, {{"MD5_Init", digestInit}, {"MD5_Final", digestEnd, "MD5_Final"}}},
    {"DigestLoadedAsNotInitialized", [](Buffer&) { loadNotInitialized(); }, {{"MD5_Init", digestInit}}},
    {"DigestLoadedAsNotInitializedAndReset", [](Buffer&) { loadNotInitialized()->reset(); },
     {{"MD5_Init", digestInit}, {"MD5_Init", digestInit}, {"MD5_Final"}}},
    {"Base64Encode", [](Buffer&) { sarn::base64Encode("hello", 5, true, true); }, encoding},
    {"Base64EncodeBuffer", [](Buffer& out) { sarn::base64EncodeBufferWithCRLF(out); }, encoding},
    {"Base64Decode", [](Buffer& out) { sarn::base64Decode("aGVsbG8=", out); },
     {{"BIO_new_mem_buf", decodeError, "BIO_new BIO_free_all"},
      {"BIO_new", decodeError, "BIO_free_all"},
      {"BIO_read", "invalid base64 data", "BIO_free_all", unchanged, "base64Decode"},
      {"BIO_free_all"}}},
    {"CalcHMAC", [](Buffer& out) { sarn::calcHMAC_SHA1(out, "x", 1, "k", 1); }, authentication},
    {"DeriveKey", [](Buffer&) { deriveKey("password", "salt", 1, 20); }, {{"PKCS5_PBKDF2_HMAC_SHA1", deriveError}}},
    {"NewKeyCache", [](Buffer&) { ul::make<sarn::CPasswordKeyCache>(ul::TCryptBuffer<char>()); }, {}},
    {"Sign", sign, inSession("OpenSSL sign init error.", "PEM_read_bio_PrivateKey", "OpenSSL sign error.",
                             {"EVP_SignFinal", "OpenSSL sign error.", "", 128})},
    {"Verify", verify, inSession("OpenSSL verify init error.", "PEM_read_bio_PUBKEY", "OpenSSL verify update error.",
                                 {"EVP_VerifyFinal", "OpenSSL verify error."})},
};
// clang-format on

struct DocumentedFailures : testing::TestWithParam<Operation> {
    // The first run makes the calls that are made once in a process.
    void SetUp() override {
        m_out.setUsed(unchanged);
        GetParam().run(m_out);
    }

    /// The names of the first `count` steps.
    std::string list(std::size_t count) const {
        std::string names;
        for (std::size_t i = 0; i < count; ++i)
            names.append(names.empty() ? "" : " ").append(m_steps[i].call);
        return names;
    }

    /// Makes one step fail. `earlier` counts the calls of the same function before it.
    void expectFailure(std::size_t index, int earlier) {
        const Step& step = m_steps[index];
        const auto run = [this] { GetParam().run(m_out); };
        m_out.setUsed(unchanged);
        CallWatch watch;
        watch.fail(step.call, earlier);
        if (step.where)
            expectInvalidArg(step.where, step.error, run);
        else
            expectError(step.error, run);
        EXPECT_EQ(watch.getNames(CallKind::Libcrypto), list(index + 1) + (step.then.empty() ? "" : " ") + step.then);
        EXPECT_EQ(m_out.getUsed(), step.used);
    }

    const Steps& m_steps = GetParam().steps;
    Buffer m_out;
};

} // namespace

TEST_P(DocumentedFailures, OfNoCall_LeaveTheCallsInTheirOrder) {
    const CallWatch watch;
    GetParam().run(m_out);
    EXPECT_EQ(watch.getNames(CallKind::Libcrypto), list(m_steps.size()));
}

TEST_P(DocumentedFailures, OfEachCall_RaiseItsErrorFreeTheObjectsAndLeaveTheUsedSize) {
    std::map<std::string, int> calls;
    for (std::size_t index = 0; index < m_steps.size(); ++index) {
        SCOPED_TRACE(std::string(m_steps[index].call) + ", call " + std::to_string(index) + ", fails");
        const int earlier = calls[m_steps[index].call]++;
        if (m_steps[index].error)
            expectFailure(index, earlier);
    }
}

INSTANTIATE_TEST_SUITE_P(All, DocumentedFailures, testing::ValuesIn(operations), getRowName<Operation>);

} // namespace sarn_test
