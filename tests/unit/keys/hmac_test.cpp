// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/vectors.h"

#include "sarn/hmac.h"

#include <gtest/gtest.h>
#include <openssl/err.h>
#include <openssl/evp.h>

#include <algorithm>
#include <climits>
#include <thread>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;

int sizeOf(const Bytes& bytes) {
    return static_cast<int>(bytes.size());
}

} // namespace

TEST(CalcHMAC, PublishedVectors_AreMet) {
    const std::vector<Vector> vectors = readVectors("hmac_rfc2202.vec", {"key", "data", "hmac"});
    EXPECT_EQ(vectors.size(), 14U);
    for (const Vector& vector : vectors) {
        const Bytes key = vector.getBytes("key");
        const Bytes data = vector.getBytes("data");
        Buffer out;
        const auto calc = vector.getSection() == "md5" ? sarn::calcHMAC_MD5 : sarn::calcHMAC_SHA1;
        calc(out, data.data(), sizeOf(data), key.data(), sizeOf(key));
        EXPECT_EQ(toHex(toBytes(out)), vector.getText("hmac")) << vector.describe();
        const EVP_MD* const md = vector.getSection() == "md5" ? EVP_md5() : EVP_sha1();
        Buffer alsoOut;
        sarn::calcHMAC(alsoOut, md, data.data(), sizeOf(data), key.data(), sizeOf(key));
        EXPECT_EQ(toBytes(alsoOut), toBytes(out));
    }
}

TEST(CalcHMAC, AnyOtherDigest_Works) {
    // RFC 4231, test case 2.
    Buffer out;
    sarn::calcHMAC(out, EVP_sha512(), "what do ya want for nothing?", 28, "Jefe", 4);
    EXPECT_EQ(toHex(toBytes(out)), "164b7a7bfcf819e2e395fbe73b56e0a387bd64222e831fd610270cd7ea250554"
                                   "9758bf75c05a994a6d034f65f8f0e6fdcaeab1a34d4a6b4b636e070a38bce737");
}

TEST(CalcHMAC, NullKeyOfNoBytes_IsTheEmptyKey) {
    Buffer out;
    sarn::calcHMAC_SHA1(out, "", 0, nullptr, 0);
    EXPECT_EQ(toHex(toBytes(out)), "fbdb1d1b18aa6c08324b7d64b71fb76370690e1d");
    sarn::calcHMAC_SHA1(out, nullptr, 0, nullptr, 0);
    EXPECT_EQ(toHex(toBytes(out)), "fbdb1d1b18aa6c08324b7d64b71fb76370690e1d");
}

TEST(CalcHMAC, Output_HasRoomForTheLargestDigest) {
    Buffer out;
    sarn::calcHMAC_MD5(out, "x", 1, "k", 1);
    EXPECT_GE(out.getAllocated(), 64);
}

TEST(CalcHMAC, LargerOutput_EndsWithTheDigestsSize) {
    Buffer out(1000, -1);
    sarn::calcHMAC_MD5(out, "x", 1, "k", 1);
    EXPECT_EQ(out.getUsed(), 16);
    sarn::calcHMAC_SHA1(out, "x", 1, "k", 1);
    EXPECT_EQ(out.getUsed(), 20);
}

TEST(CalcHMAC, RefusedByLibcrypto_RaisesAndLeavesTheUsedSize) {
    Buffer out(7, -1);
    expectError("Error computing HMAC digest.", [&] { sarn::calcHMAC(out, nullptr, "x", 1, "k", 1); });
    expectError("Error computing HMAC digest.", [&] { sarn::calcHMAC_SHA1(out, "x", 1, "k", -1); });
    expectError("Error computing HMAC digest.", [&] { sarn::calcHMAC_SHA1(out, "x", 1, "k", INT_MIN); });
    EXPECT_EQ(out.getUsed(), 7);
    EXPECT_EQ(ERR_peek_error(), 0U) << "libcrypto's error queue is as it was";
}

TEST(CalcHMAC, NegativeDataSize_IsRefused) {
    Buffer out;
    for (const int size : {-1, INT_MIN})
        expectInvalidArg("calcHMAC", "invalid data size", [&] { sarn::calcHMAC_MD5(out, "x", size, "k", 1); });
    EXPECT_EQ(out.getAllocated(), 0);
}

TEST(CalcHMAC, InputInAnOutputThatMustGrow_IsRefused_ElseProcessedRight) {
    Buffer small(32, -1);
    expectInvalidArg("calcHMAC", "input overlaps output",
                     [&] { sarn::calcHMAC_MD5(small, small.getData() + 31, 10, "k", 1); });
    expectInvalidArg("calcHMAC", "input overlaps output",
                     [&] { sarn::calcHMAC_MD5(small, "x", 1, small.getData(), 32); });
    Buffer roomy;
    roomy.insert(0, "what do ya want for nothing?", 28);
    roomy.ensureAllocated(64);
    sarn::calcHMAC_MD5(roomy, roomy.getData(), 28, "Jefe", 4);
    EXPECT_EQ(toHex(toBytes(roomy)), "750c783e6ab0b503eaa86e310a5db738");
}

TEST(CalcHMAC, NoInputAtAPlaceInTheOutput_OverlapsNothing) {
    Buffer small(32, -1);
    sarn::calcHMAC_MD5(small, small.getData() + 16, 0, "k", 1);
    Buffer expected;
    sarn::calcHMAC_MD5(expected, nullptr, 0, "k", 1);
    EXPECT_EQ(toBytes(small), toBytes(expected));
}

TEST(CalcHMAC, OnManyThreadsAtOnce_GivesEachItsOwnResult) {
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&wrong] {
            for (int round = 0; round < 500; ++round) {
                Buffer out;
                sarn::calcHMAC_MD5(out, "what do ya want for nothing?", 28, "Jefe", 4);
                if (toHex(toBytes(out)) != "750c783e6ab0b503eaa86e310a5db738")
                    ++wrong;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace sarn_test
