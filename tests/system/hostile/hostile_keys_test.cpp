// SPDX-License-Identifier: Apache-2.0
// Malformed keys that libcrypto reads. SECURITY.md lists the keys that a host must not accept.
#include "support/signing.h"

#include <openssl/sha.h>

#include <algorithm>

namespace sarn_test {

namespace {

constexpr char forgedText[] = "nobody signed this";
constexpr int forgedSize = sizeof forgedText - 1;

bool verifies(const std::string& key, const Bytes& signature) {
    return verify(sarn::createRSA_SHA1(), readHostileKey(key), toBytes(forgedText), signature);
}

void expectSignError(const std::string& key, const Bytes& data) {
    SCOPED_TRACE(key);
    expectError("OpenSSL sign error.", [&] { sign(sarn::createDSS_SHA1(), readHostileKey(key), data); });
}

/// The block that RSA signs (RFC 8017, 9.2): 00 01 FF ... 00, the digest's algorithm, the digest.
Bytes padDigest() {
    constexpr unsigned char algorithm[] = {0x30, 0x21, 0x30, 0x09, 0x06, 0x05, 0x2B, 0x0E,
                                           0x03, 0x02, 0x1A, 0x05, 0x00, 0x04, 0x14};
    Bytes block(128, 0xFF);
    block[0] = 0;
    block[1] = 1;
    block[128 - 20 - sizeof algorithm - 1] = 0;
    std::copy(std::begin(algorithm), std::end(algorithm), block.end() - 20 - sizeof algorithm);
    SHA1(reinterpret_cast<const unsigned char*>(forgedText), forgedSize, &block[128 - 20]);
    return block;
}

} // namespace

TEST(HostileKeys, RSAKeyOfExponent1_VerifiesAForgery_SoHostsMustNotAcceptIt) {
    EXPECT_TRUE(verifies("rsa_e1.pub", padDigest()));
}

TEST(HostileKeys, DSAKeyOfGenerator1_VerifiesAForgery_SoHostsMustNotAcceptIt) {
    // SEQUENCE { INTEGER 1, INTEGER 2 }
    EXPECT_TRUE(verifies("dsa_g1.pub", {0x30, 6, 2, 1, 1, 2, 1, 2}));
}

TEST(HostileKeys, DSAKeyThatHasNoSignatures_RaisesASignErrorInsteadOfLoopingForEver) {
    for (const char* const name : {"dsa_p1", "dsa_q1", "dsa_g_is_p", "dsa_p_is_g_squared", "dsa_q2", "dsa_q3", "dsa_p0",
                                   "dsa_q0", "dsa_g0", "dsa_g1_x_of_abc", "dsa_g_has_order_2", "dsa_q_divides_p"}) {
        SCOPED_TRACE(name);
        const ul::P<sarn::ISigner> signer = sarn::createDSS_SHA1()->beginSign(readHostileKey(name), "");
        signer->update("abc", 3);
        unsigned char room[256];
        int size = -7;
        expectError("OpenSSL sign error.", [&] { signer->finish(room, size); });
        EXPECT_EQ(size, -7);
    }
}

TEST(HostileKeys, RSAKeyOfAtMostOneByte_HasThatSizeAndCannotSign) {
    for (const auto& [name, size] : {std::pair("rsa_8_bits", 1), std::pair("rsa_n0", 0)}) {
        EXPECT_EQ(sarn::createRSA_SHA1()->beginSign(readHostileKey(name), "")->getMaxSignatureSize(), size);
        expectSignError(name, toBytes("abc"));
    }
}

TEST(HostileKeys, DSAKeyThatIsUnusualOrCannotSignOneText_SignsOthers) {
    for (const char* const text : {"abd", "abe"}) {
        expectSignError("dsa_g1_x_of_abc", toBytes("abc"));
        for (const char* const name : {"dsa_g1_x_of_abc", "dsa_g1"})
            EXPECT_GT(sign(sarn::createDSS_SHA1(), readHostileKey(name), toBytes(text)).size(), 8U);
    }
}

} // namespace sarn_test
