// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"

#include "sarn/hmac.h"

#include <openssl/err.h>
#include <openssl/evp.h>

namespace sarn_test {

constexpr char question[] = "what do ya want for nothing?";
constexpr char answer[] = "750c783e6ab0b503eaa86e310a5db738";
constexpr char emptyHMAC[] = "fbdb1d1b18aa6c08324b7d64b71fb76370690e1d";

TEST(CalcHMAC, PublishedVectors_AreMet) {
    const std::vector<Vector> vectors = readVectors("hmac_rfc2202.vec", {"key", "data", "hmac"});
    EXPECT_EQ(vectors.size(), 14U);
    for (const Vector& vector : vectors) {
        const bool isMD5 = vector.getSection() == "md5";
        const Bytes key = vector.getBytes("key");
        const Bytes data = vector.getBytes("data");
        const int dataSize = static_cast<int>(data.size());
        const int keySize = static_cast<int>(key.size());
        Buffer out;
        (isMD5 ? sarn::calcHMAC_MD5 : sarn::calcHMAC_SHA1)(out, data.data(), dataSize, key.data(), keySize);
        EXPECT_EQ(toHex(toBytes(out)), vector.getText("hmac")) << vector.describe();
        Buffer alsoOut;
        sarn::calcHMAC(alsoOut, isMD5 ? EVP_md5() : EVP_sha1(), data.data(), dataSize, key.data(), keySize);
        EXPECT_EQ(toBytes(alsoOut), toBytes(out));
    }
    // RFC 4231, test case 2: any digest works.
    Buffer out;
    sarn::calcHMAC(out, EVP_sha512(), question, 28, "Jefe", 4);
    EXPECT_EQ(toHex(toBytes(out)), "164b7a7bfcf819e2e395fbe73b56e0a387bd64222e831fd610270cd7ea250554"
                                   "9758bf75c05a994a6d034f65f8f0e6fdcaeab1a34d4a6b4b636e070a38bce737");
}

TEST(CalcHMAC, NullKeyOfNoBytes_IsTheEmptyKey) {
    for (const char* const data : {"", static_cast<const char*>(nullptr)}) {
        Buffer out;
        sarn::calcHMAC_SHA1(out, data, 0, nullptr, 0);
        EXPECT_EQ(toHex(toBytes(out)), emptyHMAC);
    }
}

TEST(CalcHMAC, Output_HasRoomForTheLargestDigest_AndEndsWithTheDigestsSize) {
    Buffer out;
    sarn::calcHMAC_MD5(out, "x", 1, "k", 1);
    EXPECT_GE(out.getAllocated(), 64);
    Buffer larger(1000, -1);
    // From Python's module hmac.
    sarn::calcHMAC_MD5(larger, "x", 1, "k", 1);
    EXPECT_EQ(toHex(toBytes(larger)), "442ba079e8ec6206f7f5534d4653db0f");
    sarn::calcHMAC_SHA1(larger, "x", 1, "k", 1);
    EXPECT_EQ(toHex(toBytes(larger)), "cb00131fcec602a8fc84413a2a70154d8c06a0d2");
}

TEST(CalcHMAC, RefusedByLibcrypto_RaisesAnErrorAndLeavesTheUsedSize) {
    Buffer out(7, -1);
    expectError("Error computing HMAC digest.", [&] { sarn::calcHMAC(out, nullptr, "x", 1, "k", 1); });
    for (const int size : {-1, INT_MIN})
        expectError("Error computing HMAC digest.", [&] { sarn::calcHMAC_SHA1(out, "x", 1, "k", size); });
    EXPECT_EQ(out.getUsed(), 7);
    EXPECT_EQ(ERR_peek_error(), 0U) << "libcrypto's error queue is unchanged";
}

TEST(CalcHMAC, NegativeDataSize_IsRefused) {
    Buffer out;
    for (const int size : {-1, INT_MIN})
        expectInvalidArg("calcHMAC", "invalid data size", [&] { sarn::calcHMAC_MD5(out, "x", size, "k", 1); });
    EXPECT_EQ(out.getAllocated(), 0);
}

TEST(CalcHMAC, InputInTheOutput_IsProcessedRight_UnlessTheOutputMustGrow_AndEmptyInputOverlapsNothing) {
    Buffer small(32, -1);
    unsigned char* const data = small.getData();
    expectInvalidArg("calcHMAC", "input overlaps output", [&] { sarn::calcHMAC_MD5(small, data + 31, 10, "k", 1); });
    expectInvalidArg("calcHMAC", "input overlaps output", [&] { sarn::calcHMAC_MD5(small, "x", 1, data, 32); });
    sarn::calcHMAC_SHA1(small, data + 16, 0, "", 0);
    EXPECT_EQ(toHex(toBytes(small)), emptyHMAC);
    Buffer roomy = makeBuffer(toBytes(question));
    roomy.ensureAllocated(64);
    sarn::calcHMAC_MD5(roomy, roomy.getData(), 28, "Jefe", 4);
    EXPECT_EQ(toHex(toBytes(roomy)), answer);
}

} // namespace sarn_test
