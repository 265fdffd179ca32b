// SPDX-License-Identifier: Apache-2.0
#include "support/signing.h"
#include "support/threads.h"

#include <openssl/err.h>
#include <openssl/evp.h>

namespace sarn_test {

namespace {

using Algo = sarn::COpenSSLSignatureAlgo;

static_assert(std::is_abstract_v<sarn::ISigner> && std::is_abstract_v<sarn::IVerifier> &&
              std::is_abstract_v<sarn::ISignatureAlgo>);
static_assert(std::is_copy_constructible_v<Algo> && std::is_copy_assignable_v<Algo>);
static_assert(std::is_copy_constructible_v<Algo::CSigner> && std::is_copy_assignable_v<Algo::CVerifier>);
static_assert(std::is_convertible_v<Algo::CSigner*, ul::CBase*> && std::is_convertible_v<Algo*, ul::IBase*>);

bool isRSA(const std::string& name) {
    return name.compare(0, 3, "rsa") == 0;
}

ul::P<sarn::ISignatureAlgo> createAlgo(const std::string& keyName) {
    return isRSA(keyName) ? sarn::createRSA_SHA1() : sarn::createDSS_SHA1();
}

Bytes sign(const std::string& keyName, const Bytes& data) {
    return sarn_test::sign(createAlgo(keyName), readKey(keyName), data);
}

bool verify(const std::string& keyName, const Bytes& data, const Bytes& signature) {
    return sarn_test::verify(createAlgo(keyName), readPublicKey(keyName), data, signature);
}

/// Expects that a signature does not verify or raises an error, and that libcrypto's error queue stays empty.
void expectRefused(const std::string& keyName, const Bytes& data, const Bytes& signature) {
    try {
        EXPECT_FALSE(verify(keyName, data, signature)) << keyName << " " << toHex(signature);
    } catch (const ul::CError& error) {
        EXPECT_EQ(error.getMessage(), "OpenSSL verify error.");
    }
    EXPECT_EQ(ERR_peek_error(), 0U);
}

} // namespace

TEST(SignatureAlgo, SignaturesOfTheOpensslProgram_Verify) {
    const std::vector<Vector> vectors = readVectors("signatures.vec", {"size", "signature"});
    EXPECT_EQ(vectors.size(), 42U);
    for (const Vector& vector : vectors) {
        const Bytes data = makePattern(vector.getInt("size"));
        EXPECT_TRUE(verify(vector.getSection(), data, vector.getBytes("signature"))) << vector.describe();
        if (isRSA(vector.getSection())) {
            EXPECT_EQ(toHex(sign(vector.getSection(), data)), vector.getText("signature")) << vector.describe();
        }
    }
}

TEST(SignatureAlgo, NullPassphrase_IsAnEmptyOne) {
    const std::string key = readKey("rsa1024").toLatin1();
    EXPECT_EQ(sarn::COpenSSLSignatureAlgo::CSigner(EVP_sha1(), key.c_str(), nullptr).getMaxSignatureSize(), 128);
}

TEST(SignatureAlgo, OwnSignatures_VerifyAndOnlyOverTheirData) {
    for (const char* const name : {"rsa1024", "rsa2048", "rsa3072", "rsa4096", "dsa1024", "dsa2048"}) {
        const Bytes data = makePattern(1000);
        const Bytes signature = sign(name, data);
        EXPECT_TRUE(verify(name, data, signature)) << name;
        Bytes changed = data;
        changed[500] ^= 1;
        EXPECT_FALSE(verify(name, changed, signature)) << name;
        EXPECT_FALSE(verify(name, cut(data, 999), signature)) << name;
        EXPECT_EQ(ERR_peek_error(), 0U) << "libcrypto's error queue is as it was";
    }
}

TEST(SignatureAlgo, SignatureOfAnotherKey_DoesNotVerify) {
    const Bytes data = makePattern(10);
    expectRefused("rsa2048", data, sign("rsa1024", data));
    expectRefused("dsa2048", data, sign("dsa1024", data));
    expectRefused("rsa2048", data, sign("dsa2048", data));
}

TEST(SignatureAlgo, SignerWithoutUpdate_OutlivesItsAlgorithmAndSignsTheEmptyMessage) {
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(readKey("rsa2048"), "");
    Buffer signature;
    signer->finish(signature);
    EXPECT_EQ(toBytes(signature), sign("rsa2048", {}));
    EXPECT_TRUE(sarn::createRSA_SHA1()->beginVerify(readPublicKey("rsa2048"))->finish(signature));
}

TEST(SignatureAlgo, GetMaxSignatureSize_OfRSA_IsTheSizeOfTheSignature) {
    const std::pair<const char*, int> sizes[] = {
        {"rsa1024", 128}, {"rsa2048", 256}, {"rsa3072", 384}, {"rsa4096", 512}};
    for (const auto& [name, size] : sizes) {
        EXPECT_EQ(sarn::createRSA_SHA1()->beginSign(readKey(name), "")->getMaxSignatureSize(), size);
        EXPECT_EQ(sign(name, {}).size(), static_cast<std::size_t>(size));
    }
}

TEST(SignatureAlgo, GetMaxSignatureSize_OfDSA_IsNeverExceeded_AndTheBufferHasTheRealSize) {
    for (const char* const name : {"dsa1024", "dsa2048"}) {
        const int room = sarn::createDSS_SHA1()->beginSign(readKey(name), "")->getMaxSignatureSize();
        std::size_t shortest = INT_MAX;
        for (int i = 0; i < 50; ++i) {
            const Bytes signature = sign(name, makePattern(i));
            EXPECT_LE(signature.size(), static_cast<std::size_t>(room));
            EXPECT_EQ(signature[1] + 2U, signature.size()) << "the length of its DER form";
            shortest = std::min(shortest, signature.size());
        }
        EXPECT_LT(shortest, static_cast<std::size_t>(room));
    }
}

TEST(SignatureAlgo, DataInPieces_GivesTheSignatureOfTheWhole) {
    const Bytes data = makePattern(20000);
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(readKey("rsa1024"), "");
    for (std::size_t at = 0; at < data.size(); at += 125)
        signer->update(data.data() + at, 125);
    signer->update(nullptr, 0);
    Bytes signature(128);
    int size = -7;
    signer->finish(signature.data(), size);
    EXPECT_EQ(size, 128);
    EXPECT_EQ(signature, sign("rsa1024", data));
}

TEST(SignatureAlgo, CopiesOfSessions_GoOnWithTheSameOne) {
    // A copy frees what the original frees. So these are not destroyed.
    const auto copyAndAssign = [](void* place, const auto& session) {
        using Session = std::decay_t<decltype(session)>;
        auto* const copy = ::new (place) Session(session);
        *copy = session;
        return copy;
    };
    alignas(Algo::CSigner) unsigned char signersPlace[sizeof(Algo::CSigner)];
    alignas(Algo::CVerifier) unsigned char verifiersPlace[sizeof(Algo::CVerifier)];
    const Algo::CSigner signer(EVP_sha1(), readKey("rsa1024").toLatin1().c_str(), nullptr);
    Algo::CSigner* const signersCopy = copyAndAssign(signersPlace, signer);
    signersCopy->update("abc", 3);
    Bytes signature(128);
    int size = 0;
    signersCopy->finish(signature.data(), size);
    EXPECT_EQ(signature, sign("rsa1024", toBytes("abc")));
    const Algo::CVerifier verifier(EVP_sha1(), readPublicKey("rsa1024").toLatin1().c_str());
    Algo::CVerifier* const verifiersCopy = copyAndAssign(verifiersPlace, verifier);
    verifiersCopy->update("abc", 3);
    EXPECT_TRUE(verifiersCopy->finish(signature.data(), size));
}

TEST(SignatureAlgo, DamagedSignatures_AreRefusedAndLeaveLibcryptosErrorQueueEmpty) {
    const Bytes data = makePattern(100);
    for (const char* const name : {"rsa1024", "dsa1024"}) {
        const Bytes signature = sign(name, data);
        const int size = static_cast<int>(signature.size());
        for (std::size_t at = 0; at < signature.size(); ++at) {
            Bytes damaged = signature;
            damaged[at] ^= 0x10;
            expectRefused(name, data, damaged);
        }
        for (int shorter = 0; shorter < size; shorter += 7)
            expectRefused(name, data, cut(signature, shorter));
        expectRefused(name, data, join(signature, {0}));
        expectRefused(name, data, makePattern(size));
    }
}

TEST(SignatureAlgo, EncryptedPrivateKey_NeedsItsPassphrase_AndOtherKeysIgnoreIt) {
    for (const char* const name : {"rsa2048_encrypted_traditional", "rsa2048_encrypted_pkcs8"}) {
        EXPECT_EQ(sign(sarn::createRSA_SHA1(), readKey(name), {}, testPassphrase), sign("rsa2048", {}));
        for (const char* const wrong : {"", "wrong", "for tests onl", "for tests only "})
            expectRefusedAsPrivateKey(readKey(name), wrong);
    }
    EXPECT_EQ(sign(sarn::createRSA_SHA1(), readKey("rsa2048"), {}, "any"), sign("rsa2048", {}));
    EXPECT_EQ(sign(sarn::createRSA_SHA1(), readKey("rsa2048_pkcs8"), {}, ""), sign("rsa2048", {}));
}

TEST(SignatureAlgo, TextThatIsNotAKeyOfTheRightKind_IsRefused) {
    const ul::String key = readKey("rsa2048");
    expectRefusedAsPrivateKey(readPublicKey("rsa2048"));
    expectRefusedAsPublicKey(key);
    for (const ul::String& text : {ul::String(), ul::String("no key"), key.Mid(0, key.getLength() / 2), key.Mid(40),
                                   ul::String(L"\uFF0D") + key.Mid(1)}) {
        expectRefusedAsPrivateKey(text);
        expectRefusedAsPublicKey(text);
    }
    EXPECT_EQ(ERR_peek_error(), 0U) << "libcrypto's error queue is as it was";
}

TEST(SignatureAlgo, BothFactories_SignAndVerifyTheSame) {
    const Bytes data = makePattern(10);
    const Bytes signature = sign(sarn::createDSS_SHA1(), readKey("rsa2048"), data);
    EXPECT_EQ(signature, sign("rsa2048", data));
    EXPECT_TRUE(verify(sarn::createDSS_SHA1(), readPublicKey("rsa2048"), data, signature));
    EXPECT_NE(sarn::createRSA_SHA1(), sarn::createRSA_SHA1()) << "each call makes an object";
}

TEST(SignatureAlgo, AnyOtherDigest_Works) {
    const ul::P<sarn::ISignatureAlgo> algo = ul::make<Algo>(EVP_sha256());
    const Bytes signature = sign(algo, readKey("rsa2048"), toBytes("abc"));
    EXPECT_TRUE(verify(algo, readPublicKey("rsa2048"), toBytes("abc"), signature));
    EXPECT_FALSE(verify("rsa2048", toBytes("abc"), signature)) << "another digest, another signature";
}

TEST(SignatureAlgo, SignatureOfASizeBelow1_GetsTheAnswerOfLibcrypto) {
    for (const int size : {0, -1, -128, INT_MIN}) {
        for (const void* const signature : {static_cast<const void*>("x"), static_cast<const void*>(nullptr)}) {
            EXPECT_FALSE(createAlgo("rsa1024")->beginVerify(readPublicKey("rsa1024"))->finish(signature, size));
            expectError("OpenSSL verify error.",
                        [&] { createAlgo("dsa1024")->beginVerify(readPublicKey("dsa1024"))->finish(signature, size); });
        }
    }
}

TEST(SignatureAlgo, PassphraseOutsideASCII_IsLatin1) {
    // The openssl program encrypted it under the bytes FC DF.
    const ul::String key = readKey("rsa1024_encrypted_latin1");
    EXPECT_TRUE(sarn::createRSA_SHA1()->beginSign(key, L"\u00FC\u00DF"));
    expectRefusedAsPrivateKey(key, "\xC3\xBC\xC3\x9F");
}

TEST(SignatureAlgo, NegativeSizes_AreRefused) {
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(readKey("rsa1024"), "");
    const ul::P<sarn::IVerifier> verifier = sarn::createRSA_SHA1()->beginVerify(readPublicKey("rsa1024"));
    const std::string where = "COpenSSLSignatureAlgo::";
    for (const int size : {-1, INT_MIN}) {
        expectInvalidArg(where + "CSigner::update", "invalid data size", [&] { signer->update("x", size); });
        expectInvalidArg(where + "CVerifier::update", "invalid data size", [&] { verifier->update("x", size); });
    }
}

TEST(SignatureAlgo, OneAlgorithmOnManyThreads_GivesEachItsOwnSession) {
    const ul::P<sarn::ISignatureAlgo> algo = sarn::createRSA_SHA1();
    const ul::String privateKey = readKey("rsa1024");
    const ul::String publicKey = readPublicKey("rsa1024");
    runOnThreads(8, [&](int number) {
        for (int round = 0; round < 20; ++round) {
            const Bytes data = makePattern(100 * number + round);
            EXPECT_TRUE(verify(algo, publicKey, data, sign(algo, privateKey, data)));
        }
    });
}

} // namespace sarn_test
