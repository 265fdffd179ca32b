// SPDX-License-Identifier: Apache-2.0
// Every call of the encodings and keys into libcrypto fails once.
#include "failures/linked/libcrypto_faults.h"
#include "support/allocation_failures.h"
#include "support/expect.h"

#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;

constexpr char encodeError[] = "Internal error: error during base64 encode.";
constexpr char decodeError[] = "Internal error: error during base64 decode.";
constexpr char deriveError[] = "Error deriving cryptographic key from password.";

/// Lets a call fail and expects that all chains are freed.
template <class Action>
void withFailing(const char* call, int index, Action action) {
    SCOPED_TRACE(std::string(call) + " " + std::to_string(index));
    LibcryptoFaults faults;
    faults.failCall(call, index);
    action();
    EXPECT_GT(faults.getCallCount(call), index) << "it was called";
    EXPECT_GE(faults.getCallCount("BIO_free_all"), std::string(call).find("BIO_") == 0 ? 1 : 0);
}

void encode() {
    sarn::base64Encode("hello", 5, true, true);
}

ul::P<sarn::CPasswordKeyCache> makeCache() {
    ul::TCryptBuffer<char> password;
    password.init("password", 8);
    return ul::make<sarn::CPasswordKeyCache>(password);
}

} // namespace

TEST(KeyFaults, Base64Encode_WhoseCallsFail_RaisesTheDocumentedErrorAndFreesTheChain) {
    withFailing("BIO_new", 0, [] { expectError(encodeError, encode); });
    withFailing("BIO_new", 1, [] { expectError(encodeError, encode); });
    withFailing("BIO_write", 0, [] { expectError(encodeError, encode); });
    withFailing("BIO_ctrl", 0, [] { expectError(encodeError, encode); });
}

TEST(KeyFaults, Base64EncodeBufferWithCRLF_WhoseEncodingFails_LeavesTheBuffer) {
    Buffer buffer;
    buffer.insert(0, "hello", 5);
    withFailing("BIO_write", 0, [&] { expectError(encodeError, [&] { sarn::base64EncodeBufferWithCRLF(buffer); }); });
    EXPECT_EQ(toBytes(buffer), toBytes(std::string("hello")));
}

TEST(KeyFaults, Base64Decode_WhoseCallsFail_RaisesAndLeavesTheUsedSize) {
    Buffer out(3, -1);
    const auto decode = [&out] { sarn::base64Decode("aGVsbG8=", out); };
    withFailing("BIO_new", 0, [&] { expectError(decodeError, decode); });
    withFailing("BIO_new_mem_buf", 0, [&] { expectError(decodeError, decode); });
    withFailing("BIO_read", 0, [&] { expectInvalidArg("base64Decode", "invalid base64 data", decode); });
    EXPECT_EQ(out.getUsed(), 3);
}

TEST(KeyFaults, Base64Decode_WhoseReadFailsWhereFewBytesAreExpected_StillRaises) {
    for (const char* const text : {"", "QQ", "QQ==", "QUI", "QUI="}) {
        Buffer out(3, -1);
        withFailing("BIO_read", 0, [&] {
            expectInvalidArg("base64Decode", "invalid base64 data", [&] { sarn::base64Decode(text, out); });
        });
        EXPECT_EQ(out.getUsed(), 3) << text;
    }
}

TEST(KeyFaults, Base64_WithoutMemory_RaisesAndFreesTheChain) {
    LibcryptoFaults faults;
    Buffer out;
    EXPECT_GT(failEachAllocation(encode), 0);
    EXPECT_GT(failEachAllocation([] {
                  Buffer decoded;
                  sarn::base64Decode("aGVsbG8haGVsbG8haGVsbG8haGVsbG8h", decoded);
              }),
              1);
    EXPECT_GT(faults.getCallCount("BIO_new"), 3);
}

TEST(KeyFaults, CalcHMAC_ThatFails_RaisesTheDocumentedErrorAndLeavesTheUsedSize) {
    Buffer out(3, -1);
    withFailing("HMAC", 0, [&] {
        expectError("Error computing HMAC digest.", [&] { sarn::calcHMAC_SHA1(out, "x", 1, "k", 1); });
    });
    EXPECT_EQ(out.getUsed(), 3);
}

TEST(KeyFaults, DeriveKey_ThatFails_RaisesTheDocumentedError) {
    unsigned char key[20];
    withFailing("PKCS5_PBKDF2_HMAC_SHA1", 0, [&] {
        expectError(deriveError, [&] { sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("password", 8, "salt", 4, 1, 20, key); });
    });
}

TEST(KeyFaults, EmptyKeyAndPassword_ReachLibcryptoAsEmptyStringsNotAsNull) {
    Buffer out;
    unsigned char key[20];
    LibcryptoFaults faults;
    sarn::calcHMAC_SHA1(out, "x", 1, nullptr, 0);
    sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1(nullptr, 0, "salt", 4, 1, 20, key);
    EXPECT_EQ(faults.getCallCount("HMAC"), 1);
    EXPECT_EQ(faults.getCallCount("HMAC with a null key"), 0);
    EXPECT_EQ(faults.getCallCount("PKCS5_PBKDF2_HMAC_SHA1"), 1);
    EXPECT_EQ(faults.getCallCount("PKCS5_PBKDF2_HMAC_SHA1 with a null password"), 0);
}

TEST(KeyFaults, GetKey_WhoseDerivationFails_IsTriedAgainAndThenCached) {
    const ul::P<sarn::CPasswordKeyCache> cache = makeCache();
    LibcryptoFaults faults;
    faults.failCall("PKCS5_PBKDF2_HMAC_SHA1");
    expectError(deriveError, [&] { cache->getKey(32, 258, 1000); });
    const auto key = cache->getKey(32, 258, 1000);
    EXPECT_TRUE(key);
    EXPECT_EQ(cache->getKey(32, 258, 1000), key);
    EXPECT_EQ(faults.getCallCount("PKCS5_PBKDF2_HMAC_SHA1"), 2) << "the cached key took no third";
}

TEST(KeyFaults, NewCache_LeavesLibcryptoAlone) {
    LibcryptoFaults faults;
    makeCache();
    EXPECT_EQ(faults.getCalls(), std::vector<std::string>());
}

TEST(KeyFaults, EightThreadsThatAskForTheSameNewKey_DeriveItOnce) {
    const ul::P<sarn::CPasswordKeyCache> cache = makeCache();
    LibcryptoFaults faults;
    std::atomic<bool> mayStart{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            while (!mayStart)
                std::this_thread::yield();
            cache->getKey(32, 258, 50000);
        });
    mayStart = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(faults.getCallCount("PKCS5_PBKDF2_HMAC_SHA1"), 1);
}

TEST(KeyFaults, GetKey_WithoutMemory_RaisesAndIsTriedAgain) {
    const ul::P<sarn::CPasswordKeyCache> cache = makeCache();
    EXPECT_GT(failEachAllocation([&] { cache->getKey(32, 258, 1); }), 1);
    EXPECT_TRUE(cache->getKey(32, 258, 1));
}

} // namespace sarn_test
