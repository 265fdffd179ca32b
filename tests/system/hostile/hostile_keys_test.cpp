// SPDX-License-Identifier: Apache-2.0
// Texts that are almost keys, keys of odd numbers and of every other kind, and malformed keys that libcrypto reads:
// SECURITY.md lists the keys that a host must not accept.
#include "support/signing.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/sha.h>

#include <optional>

namespace sarn_test {

namespace {

constexpr unsigned char integerTag = 0x02;
constexpr unsigned char sequenceTag = 0x30;

/// A PEM text in its parts.
struct Pem {
    explicit Pem(const ul::String& key) : text(key.toLatin1()) {
        const std::size_t bodyStart = text.find('\n') + 1;
        label = text.substr(11, bodyStart - 1 - 11 - 5);
        Buffer decoded;
        const std::string body = text.substr(bodyStart, text.rfind("-----END") - bodyStart);
        sarn::base64Decode(ul::String(body.data(), body.size()), decoded);
        der = toBytes(decoded);
    }

    std::string text;
    std::string label;
    Bytes der;
};

/// Expects that no part of a key is accepted: neither of its text nor of its bytes, nor with other lengths.
template <class ExpectRefused>
void expectWholeOnly(const ul::String& key, ExpectRefused expectRefused) {
    const Pem pem(key);
    SCOPED_TRACE(pem.label);
    ASSERT_EQ(pem.der.at(0), sequenceTag);
    for (std::size_t size = 0; size < pem.der.size(); ++size)
        expectRefused(toPem(pem.label, cut(pem.der, static_cast<int>(size))));
    for (std::size_t size = 0; size < pem.text.rfind("-----END") + 8; ++size)
        expectRefused(ul::String(pem.text.data(), size));
    // The length of the outer sequence follows its tag: 0x82 and two bytes, or 0x81 and one.
    const int lengthEnd = pem.der.at(1) - 0x80 + 2;
    for (const char* const length : {"847fffffff", "8480000000", "84ffffffff", "887fffffffffffffff", "ff", "00"}) {
        const Bytes content(pem.der.begin() + lengthEnd, pem.der.end());
        expectRefused(toPem(pem.label, join(join({sequenceTag}, fromHex(length)), content)));
    }
}

Bytes encode(unsigned char tag, const Bytes& content) {
    const auto size = static_cast<unsigned>(content.size());
    return join({tag, 0x83, static_cast<unsigned char>(size >> 16), static_cast<unsigned char>(size >> 8),
                 static_cast<unsigned char>(size)},
                content);
}

/// A public key for RSA with these bytes as its integers.
ul::String makeRSAKey(const Bytes& modulus, const Bytes& exponent) {
    const Bytes numbers = encode(sequenceTag, join(encode(integerTag, modulus), encode(integerTag, exponent)));
    const Bytes algorithm = fromHex("300d06092a864886f70d0101010500");
    return toPem("PUBLIC KEY", encode(sequenceTag, join(algorithm, encode(0x03, join({0}, numbers)))));
}

constexpr bool isLibcrypto35 = OPENSSL_VERSION_NUMBER >= 0x30500000L;

/// The answer of a verifier under a key, if the key is accepted and libcrypto does not fail.
std::optional<bool> tryVerify(const ul::String& key, const Bytes& signature) {
    try {
        return verify(sarn::createRSA_SHA1(), key, toBytes("nobody signed this"), signature);
    } catch (const ul::CError&) {
        return std::nullopt;
    }
}

/// Generates a key of a kind that needs no parameters, or on a curve.
struct GeneratedKey {
    explicit GeneratedKey(int kind) {
        EVP_PKEY_CTX* const context = EVP_PKEY_CTX_new_id(kind, nullptr);
        EXPECT_EQ(EVP_PKEY_keygen_init(context), 1);
        if (kind == EVP_PKEY_EC) {
            EXPECT_EQ(EVP_PKEY_CTX_set_ec_paramgen_curve_nid(context, NID_X9_62_prime256v1), 1);
        }
        EVP_PKEY* key = nullptr;
        EXPECT_EQ(EVP_PKEY_keygen(context, &key), 1);
        const auto write = [](auto print) {
            BIO* const text = BIO_new(BIO_s_mem());
            EXPECT_EQ(print(text), 1);
            char* data = nullptr;
            const long size = BIO_get_mem_data(text, &data);
            const ul::String result(data, static_cast<std::size_t>(size));
            BIO_free(text);
            return result;
        };
        privateKey = write(
            [&](BIO* text) { return PEM_write_bio_PKCS8PrivateKey(text, key, nullptr, nullptr, 0, nullptr, nullptr); });
        publicKey = write([&](BIO* text) { return PEM_write_bio_PUBKEY(text, key); });
        EVP_PKEY_free(key);
        EVP_PKEY_CTX_free(context);
    }

    ul::String privateKey;
    ul::String publicKey;
};

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

TEST(DamagedKeys, PartOfAPublicKeyOrOneOfAnotherLength_IsRefused) {
    for (const char* const name : {"rsa1024", "dsa1024"})
        expectWholeOnly(readPublicKey(name), expectRefusedAsPublicKey);
}

TEST(DamagedKeys, PartOfAPrivateKeyOrOneOfAnotherLength_IsRefused) {
    for (const char* const name : {"rsa1024", "dsa1024", "rsa2048_pkcs8"})
        expectWholeOnly(readKey(name), [](const ul::String& text) { expectRefusedAsPrivateKey(text); });
}

TEST(DamagedKeys, KeyUnderTheLabelOfAnotherKind_IsRefused) {
    const Pem key(readPublicKey("rsa1024"));
    // Under the labels of RSA's own formats libcrypto 3 reads this key all the same.
    for (const char* const label : {"CERTIFICATE", "CERTIFICATE REQUEST", "DSA PARAMETERS", "ANY KEY", ""}) {
        SCOPED_TRACE(label);
        expectRefusedAsPublicKey(toPem(label, key.der));
        expectRefusedAsPrivateKey(toPem(label, key.der));
    }
    for (const char* const label : {"PRIVATE KEY", "ENCRYPTED PRIVATE KEY"}) {
        expectRefusedAsPrivateKey(toPem(label, key.der));
        // libcrypto 3.5 reads the public key that is there.
        if (!isLibcrypto35)
            expectRefusedAsPublicKey(toPem(label, key.der));
    }
    expectRefusedAsPrivateKey(toPem("PUBLIC KEY", key.der));
}

TEST(DamagedKeys, RSAKeyOfOddNumbers_VerifiesNothingAndEnds) {
    // 0, 1, even, odd, negative, of 3072 bits, of the largest size that libcrypto takes (16384 bits), beyond it.
    // clang-format off
    const Bytes numbers[] = {{0}, {1}, {2}, {3}, {0xFF}, join({0}, Bytes(384, 0xFF)), join({0x7F}, Bytes(2047, 0xFF)),
                             join({0x7F}, Bytes(2049, 0xFF))};
    // clang-format on
    int answers = 0;
    for (const Bytes& modulus : numbers) {
        for (const Bytes& exponent : numbers) {
            if (exponent == Bytes{1})
                continue; // Another test shows that anyone can sign for it.
            const ul::String key = makeRSAKey(modulus, exponent);
            for (const unsigned char byte : Bytes{0x00, 0x01, 0x7F}) {
                const std::optional<bool> answer = tryVerify(key, Bytes(modulus.size(), byte));
                answers += answer.has_value() ? 1 : 0;
                EXPECT_FALSE(answer.value_or(false)) << modulus.size() << " " << exponent.size();
            }
        }
    }
    EXPECT_GT(answers, 20) << "libcrypto no longer reads them";
}

TEST(DamagedKeys, KeysOfOtherKinds_SignInTheirOwnSchemeOrRaise) {
    const ul::P<sarn::ISignatureAlgo> algo = sarn::createRSA_SHA1();
    const Bytes data = toBytes("data");
    const GeneratedKey curve(EVP_PKEY_EC);
    EXPECT_TRUE(verify(algo, curve.publicKey, data, sign(algo, curve.privateKey, data)));
    EXPECT_FALSE(verify(algo, curve.publicKey, toBytes("dat4"), sign(algo, curve.privateKey, data)));
    for (const int kind : {EVP_PKEY_ED25519, EVP_PKEY_X25519}) {
        const GeneratedKey key(kind);
        expectError("OpenSSL sign error.", [&] { sign(algo, key.privateKey, data); });
        if (isLibcrypto35 && kind == EVP_PKEY_ED25519)
            EXPECT_FALSE(verify(algo, key.publicKey, data, Bytes(64)));
        else
            expectError("OpenSSL verify error.", [&] { verify(algo, key.publicKey, data, Bytes(64)); });
    }
}

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
