// SPDX-License-Identifier: Apache-2.0
// libcrypto's error queue belongs to the host: every operation leaves its errors, texts and marks unchanged, even if it
// fails or refuses its arguments.
#include "support/cipher_test_data.h"
#include "support/password_keys.h"
#include "support/signing.h"

#include "sarn/signed_config.h"

#include <openssl/err.h>

namespace sarn_test {

namespace {

/// The number of errors of a host, and the numbers of the errors after which it has set a mark, counted from 1.
struct HostsQueue {
    int errors;
    std::vector<int> marks;
};

// clang-format off
const HostsQueue hostsQueues[] = {
    {0, {}}, {2, {}}, {2, {1}}, {2, {2}}, {2, {1, 2}}, {2, {2, 2}}, {3, {}}, {3, {1, 3}}, {3, {1, 2, 3}},
#if OPENSSL_VERSION_NUMBER < 0x30000000L
    // With 16 errors the queue is full: libcrypto 3 drops the oldest for each that it adds, even temporarily.
    {15, {}}, {15, {1}}, {15, {7, 15}}, {16, {}}, {16, {1}}, {16, {2}}, {16, {8, 16}},
#endif
};
// clang-format on

void fillQueue(const HostsQueue& queue) {
    ERR_clear_error();
    for (int i = 1; i <= queue.errors; ++i) {
        ERR_put_error(ERR_LIB_USER, 0, 100 + i, "host.cpp", i);
        ERR_add_error_data(1, ("text " + std::to_string(i)).c_str());
        for (const int mark : queue.marks)
            if (mark == i)
                ERR_set_mark();
    }
}

/// Empties the queue and describes its errors.
std::string takeErrors() {
    std::string all;
    const char* file = nullptr;
    const char* text = nullptr;
    int line = 0;
    int flags = 0;
    for (;;) {
#if OPENSSL_VERSION_NUMBER < 0x30000000L
        const unsigned long code = ERR_get_error_line_data(&file, &line, &text, &flags);
#else
        const unsigned long code = ERR_get_error_all(&file, &line, nullptr, &text, &flags);
#endif
        if (code == 0)
            return all;
        all += std::to_string(ERR_GET_REASON(code)) + " " + file + ":" + std::to_string(line) + " " + text + "\n";
    }
}

/// The queue of a host that returns to its newest mark `pops` times after `operation`.
std::string describeQueueAfter(const HostsQueue& queue, std::size_t pops, const std::function<void()>& operation) {
    fillQueue(queue);
    operation();
    std::string description;
    for (std::size_t i = 0; i < pops; ++i)
        description += ERR_pop_to_mark() != 0 ? "mark\n" : "no mark\n";
    return description + takeErrors();
}

/// Expects that `operation` leaves each queue unchanged, as a whole and up to each of its marks.
void expectQueueUntouched(const char* name, const std::function<void()>& operation) {
    for (const HostsQueue& queue : hostsQueues) {
        SCOPED_TRACE(name + (" with " + std::to_string(queue.errors)) + " errors and " +
                     std::to_string(queue.marks.size()) + " marks");
        for (std::size_t pops = 0; pops <= queue.marks.size() + 1; ++pops)
            EXPECT_EQ(describeQueueAfter(queue, pops, operation), describeQueueAfter(queue, pops, [] {}));
    }
}

void expectQueueUntouchedByFailure(const char* name, const std::function<void()>& operation) {
    expectQueueUntouched(name, [&] { EXPECT_THROW(operation(), ul::CError); });
}

const Bytes data = toBytes("data");

} // namespace

TEST(ErrorQueue, OfAHost_IsUnchangedByCiphers) {
    const Bytes encrypted = runAES256(encrypting, data);
    for (const CipherOperation& operation : cipherOperations)
        expectQueueUntouched(operation.name, [&] { runAES256(operation, encrypted); });
    expectQueueUntouched("encrypt under a random IV", [] { runAES256(encrypting, data, nullptr); });
    expectQueueUntouched("construction", [] { ul::make<sarn::CCipher_Cast128CBC>(); });
}

TEST(ErrorQueue, OfAHost_IsUnchangedByCiphersThatFailOrRefuse) {
    Buffer out;
    expectQueueUntouchedByFailure("damaged padding", [] { runAES256(decrypting, iv16); });
    expectQueueUntouchedByFailure("part of a block", [] { runAES256(decrypting, cut(iv16, 5)); });
    expectQueueUntouchedByFailure("refused by encrypt",
                                  [&] { runAES256(encrypting, "data", -1, out, false, iv16.data()); });
    expectQueueUntouchedByFailure("refused by decrypt", [] { runAES256(decrypting, data, nullptr); });
    expectQueueUntouchedByFailure("refused key",
                                  [&] { getAES256()->encrypt(TestKey(5), "data", 4, out, false, iv16.data()); });
}

#if OPENSSL_VERSION_NUMBER < 0x30000000L
// libcrypto 3 frees such a text itself, whenever a mark is removed.
TEST(ErrorQueue, TextThatAHostHasTaken_StaysAfterASuccess) {
    fillQueue({1, {}});
    const char* text = nullptr;
    int flags = 0;
    ERR_get_error_line_data(nullptr, nullptr, &text, &flags);
    runAES256(encrypting, data);
    EXPECT_STREQ(text, "text 1");
}
#endif

TEST(ErrorQueue, OfAHost_IsUnchangedByEncodings) {
    Buffer out;
    expectQueueUntouched("base64Encode", [] { sarn::base64Encode("data", 4, true, false); });
    expectQueueUntouched("base64Decode", [&] { sarn::base64Decode("ZGF0YQ==", out); });
    expectQueueUntouchedByFailure("text that is not Base64", [&] { sarn::base64Decode("Z", out); });
    expectQueueUntouched("calcHMAC", [&] { sarn::calcHMAC_SHA1(out, "data", 4, "key", 3); });
    expectQueueUntouchedByFailure("refused HMAC", [&] { sarn::calcHMAC_SHA1(out, "data", 4, "key", -1); });
    expectQueueUntouched("derivation", [] { deriveKey("password", "salt", 2, 16); });
    expectQueueUntouchedByFailure("derivation that fails", [] { deriveKey("password", "salt", 2, -1); });
}

TEST(ErrorQueue, OfAHost_IsUnchangedBySigning) {
    const ul::String privateKey = readKey("rsa1024");
    const ul::String publicKey = readPublicKey("rsa1024");
    const ul::P<sarn::ISignatureAlgo> algo = sarn::createRSA_SHA1();
    const Bytes signature = sign(algo, privateKey, data);
    expectQueueUntouched("sign", [&] { sign(algo, privateKey, data); });
    expectQueueUntouched("beginVerify", [&] { algo->beginVerify(publicKey); });
    expectQueueUntouched("verify", [&] { EXPECT_TRUE(verify(algo, publicKey, data, signature)); });
    expectQueueUntouched("verify changed data",
                         [&] { EXPECT_FALSE(verify(algo, publicKey, toBytes("dat4"), signature)); });
    expectQueueUntouchedByFailure("key that is not one", [&] { algo->beginVerify("no key"); });
    const ul::String ofUnknownKind = toPem("PUBLIC KEY", fromHex("3013300c06082a0304050607080905000303000500"));
    expectQueueUntouchedByFailure("key of an unknown kind", [&] { algo->beginVerify(ofUnknownKind); });
    expectQueueUntouchedByFailure("private key as public key", [&] { algo->beginVerify(privateKey); });
    expectQueueUntouchedByFailure("signature of a missing file", [&] {
        sarn::verifyFileSignature_RSA_SHA1(ul::CWindowsPath("missing.dat"), publicKey, Buffer());
    });
}

TEST(ErrorQueue, OfAHost_IsUnchangedByHostileKeysAndPassphrases) {
    const ul::P<sarn::ISignatureAlgo> algo = sarn::createDSS_SHA1();
    // libcrypto reads these and fails to sign.
    for (const char* const name : {"dsa_q1", "dsa_g_is_p", "dsa_g1_x_of_abc", "rsa_8_bits", "rsa_n0"}) {
        const ul::String key = readHostileKey(name);
        expectQueueUntouchedByFailure(name, [&] { sign(algo, key, toBytes("abc")); });
    }
    const ul::String encrypted = readKey("rsa2048_encrypted_traditional");
    for (const char* const passphrase : {"", "wrong"})
        expectQueueUntouchedByFailure("wrong passphrase", [&] { algo->beginSign(encrypted, passphrase); });
    expectQueueUntouched("right passphrase", [&] { algo->beginSign(encrypted, testPassphrase); });
    const ul::String publicDSAKey = readPublicKey("dsa1024");
    expectQueueUntouchedByFailure("signature that is not DER",
                                  [&] { verify(algo, publicDSAKey, data, toBytes("no signature")); });
}

TEST(ErrorQueue, OfAHost_IsUnchangedByConfigurations) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("a.ini", "[a]\nb=1\n");
    const ul::String publicKey = readPublicKey("rsa1024");
    writeSignatureFile(path, "rsa1024");
    expectQueueUntouched("signed", [&] { sarn::CSignedConfig(path, publicKey, false); });
    expectQueueUntouchedByFailure("read as Base64", [&] { sarn::CSignedConfig(path, publicKey, true); });
    expectQueueUntouchedByFailure("key of another",
                                  [&] { sarn::CSignedConfig(path, readPublicKey("dsa1024"), false); });
    folder.write("a.ini", "[a]\nb=2\n");
    expectQueueUntouchedByFailure("changed", [&] { sarn::CSignedConfig(path, publicKey, false); });
}

} // namespace sarn_test
