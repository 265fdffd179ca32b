// SPDX-License-Identifier: Apache-2.0
// Keys that libcrypto reads although they are none. What a host must not accept is shown here; see SECURITY.md.
#include "support/expect.h"
#include "support/key_files.h"

#include "sarn/signature.h"

#include <gtest/gtest.h>
#include <openssl/sha.h>

#include <algorithm>

namespace sarn_test {

namespace {

constexpr char forgedText[] = "nobody signed this";
constexpr int forgedSize = sizeof forgedText - 1;

ul::String readHostileKey(const std::string& name) {
    return readKey("../hostile_keys/" + name, ".pem");
}

bool verifies(const std::string& key, const Bytes& signature) {
    const ul::P<sarn::IVerifier> verifier = sarn::createRSA_SHA1()->beginVerify(readHostileKey(key));
    verifier->update(forgedText, forgedSize);
    return verifier->finish(signature.data(), static_cast<int>(signature.size()));
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

TEST(HostileKeys, RSAKeyOfExponent1_VerifiesWhatNobodySigned_SoNoHostMayAcceptIt) {
    EXPECT_TRUE(verifies("rsa_e1.pub", padDigest()));
}

TEST(HostileKeys, DSAKeyOfGenerator1_VerifiesWhatNobodySigned_SoNoHostMayAcceptIt) {
    // SEQUENCE { INTEGER 1, INTEGER 2 }
    EXPECT_TRUE(verifies("dsa_g1.pub", {0x30, 6, 2, 1, 1, 2, 1, 2}));
}

TEST(HostileKeys, DSAKeyWithoutASignature_IsASignErrorInsteadOfNoEnd) {
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

TEST(HostileKeys, RSAKeyOfOneByte_HasThatSizeAndCannotSign) {
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(readHostileKey("rsa_8_bits"), "");
    EXPECT_EQ(signer->getMaxSignatureSize(), 1);
    signer->update("abc", 3);
    ul::TBuffer<unsigned char> signature;
    expectError("OpenSSL sign error.", [&] { signer->finish(signature); });
}

TEST(HostileKeys, RSAKeyOfNoSize_SaysSoAndCannotSign) {
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(readHostileKey("rsa_n0"), "");
    EXPECT_EQ(signer->getMaxSignatureSize(), 0);
    ul::TBuffer<unsigned char> signature;
    expectError("OpenSSL sign error.", [&] { signer->finish(signature); });
}

TEST(HostileKeys, DSAKeyThatIsOddButSigns_StillSigns) {
    const ul::P<sarn::ISigner> signer = sarn::createDSS_SHA1()->beginSign(readHostileKey("dsa_g1"), "");
    signer->update("abc", 3);
    ul::TBuffer<unsigned char> signature;
    signer->finish(signature);
    EXPECT_GT(signature.getUsed(), 8);
}

TEST(HostileKeys, DSAKeyThatCannotSignOneText_StillSignsOthers) {
    for (const char* const text : {"abc", "abd", "abc", "abe"}) {
        const ul::P<sarn::ISigner> signer = sarn::createDSS_SHA1()->beginSign(readHostileKey("dsa_g1_x_of_abc"), "");
        signer->update(text, 3);
        ul::TBuffer<unsigned char> signature;
        if (text == std::string("abc"))
            expectError("OpenSSL sign error.", [&] { signer->finish(signature); });
        else
            EXPECT_NO_THROW(signer->finish(signature)) << text;
    }
}

} // namespace sarn_test
