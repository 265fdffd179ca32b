// SPDX-License-Identifier: Apache-2.0
// Copy and move operations of every class, and interfaces over one root.
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"
#include "support/signing.h"
#include "support/temp_folder.h"

#include "sarn/openssl_init.h"
#include "sarn/signed_config.h"

#include <openssl/evp.h>

#include <type_traits>

namespace sarn_test {

namespace {

template <class... T>
constexpr bool areCopyable = (... && (std::is_copy_constructible_v<T> && std::is_copy_assignable_v<T> &&
                                      std::is_move_constructible_v<T> && std::is_move_assignable_v<T>));
template <class T>
constexpr bool isNeither = !std::is_copy_constructible_v<T> && !std::is_copy_assignable_v<T> &&
                           !std::is_move_constructible_v<T> && !std::is_move_assignable_v<T>;
template <class... T>
constexpr bool areInterfaces = (... && (std::is_abstract_v<T> && std::has_virtual_destructor_v<T> &&
                                        std::is_base_of_v<ul::IBase, T> && !std::is_base_of_v<ul::CBase, T>));
/// A conversion to the root is unambiguous only while ul::IBase is one shared virtual root.
template <class Interface, class... T>
constexpr bool implement = (... && (std::is_base_of_v<ul::CBase, T> && std::is_base_of_v<Interface, T> &&
                                    std::is_convertible_v<T*, ul::IBase*>));

using namespace sarn;
static_assert(areCopyable<COpenSSLCipher, CCipher_AES256CBC, CCipher_AES128CBC, CCipher_BlowFishCBC, CCipher_Cast128CBC,
                          CCipher_IDEACBC, CCipher_Null>);
static_assert(areCopyable<CDigestType_MD4, CDigestType_MD5, CDigestType_SHA1, CDigestType_SHA256, CDigestType_Adler32,
                          CDigestType_CRC32, CDigestType_MD4_SHA1, CDigestType_MD4_SHA1_Adler32>);
static_assert(areCopyable<CDigest_Adler32, CDigest_CRC32, COpenSSLInit>);
static_assert(areCopyable<COpenSSLInit::CCleaner, COpenSSLInit::CThreadStuff>);
static_assert(isNeither<CCipherManager> && isNeither<CDigestManager>);
static_assert(areInterfaces<ICipher, IDigest, IDigestType>);
static_assert(implement<ICipher, COpenSSLCipher, CCipher_Null> && implement<IDigest, CDigest_CRC32>);
static_assert(implement<ul::IBase, CCipherManager, CDigestManager>);
static_assert(std::is_base_of_v<COpenSSLCipher, CCipher_AES128CBC> &&
              sizeof(CCipher_AES128CBC) == sizeof(COpenSSLCipher));

/// Uses each copy and move operation, and returns the last result.
template <class T>
T copyAndMove(const T& value) {
    T copy(value);
    T moved(std::move(copy));
    copy = moved;
    moved = std::move(copy);
    return moved;
}

template <class Cipher>
void expectEqualCipher() {
    Cipher cipher;
    Cipher copy = copyAndMove(cipher);
    EXPECT_EQ(copy.getID(), cipher.getID());
    const Bytes iv(16);
    EXPECT_EQ(runCipher(copy, encrypting, toBytes("sample"), iv.data()),
              runCipher(cipher, encrypting, toBytes("sample"), iv.data()));
}

template <class Type>
void expectEqualType() {
    Type type;
    Type copy = copyAndMove(type);
    EXPECT_EQ(finish(*copy.createDigest()), finish(*type.createDigest()));
}

template <class Digest>
void expectEqualDigest(Digest digest) {
    feed(digest, toBytes("sample"));
    Digest copy = copyAndMove(digest);
    EXPECT_EQ(finish(copy), finish(digest));
}

template <class... Cipher>
void expectEqualCiphers() {
    (..., expectEqualCipher<Cipher>());
}

template <class... Type>
void expectEqualTypes() {
    (..., expectEqualType<Type>());
}

/// A host's own signer and verifier.
struct Signer : ul::CBase, ISigner {
    int getMaxSignatureSize() const override { return size; }
    void update(const void*, int) override {}
    void finish(void*, int&) override {}
    int size = 0;
};
struct Verifier : ul::CBase, IVerifier {
    void update(const void*, int) override {}
    bool finish(const void*, int) override { return result; }
    bool result = false;
};

struct Algorithm : ul::CBase, ISignatureAlgo {
    ul::P<ISigner> beginSign(const ul::String&, const ul::String&) override { return ul::make<Signer>(); }
    ul::P<IVerifier> beginVerify(const ul::String&) override { return ul::make<Verifier>(); }
};

/// The ciphertext of part of a block, which the cipher completes with its zero block.
Bytes encryptSample(sarn::ICipher& cipher) {
    const Bytes encrypted = runCipher(cipher, encryptingUnpadded, toBytes("sample"), Bytes(8).data());
    EXPECT_EQ(encrypted.size(), 8U);
    return encrypted;
}

} // namespace

TEST(ObjectModel, CopiedAndMovedCiphers_EncryptAsTheirSources) {
    expectEqualCiphers<CCipher_AES256CBC, CCipher_AES128CBC, CCipher_BlowFishCBC, CCipher_Cast128CBC, CCipher_Null>();
    if (hasIDEA)
        expectEqualCiphers<CCipher_IDEACBC>();
}

TEST(ObjectModel, CopiedAndMovedDigestsAndTypes_GiveTheDigestsOfTheirSources) {
    expectEqualTypes<CDigestType_MD4, CDigestType_MD5, CDigestType_SHA1, CDigestType_SHA256, CDigestType_Adler32,
                     CDigestType_CRC32, CDigestType_MD4_SHA1, CDigestType_MD4_SHA1_Adler32>();
    expectEqualDigest(CDigest_Adler32(ul::make<CDigestType_Adler32>().get()));
    expectEqualDigest(CDigest_CRC32(ul::make<CDigestType_CRC32>().get()));
}

TEST(ObjectModel, AssignmentBetweenInterfaces_ChangesNothing) {
    const ul::P<ICipher> cipher = getAnyCipher("null");
    *cipher = std::move(*getAnyCipher("aes256cbc"));
    EXPECT_EQ(cipher->getID(), "null");
    const ul::P<IDigest> digest = createDigest("crc32", toBytes("sample"));
    *digest = std::move(*createDigest("adler32"));
    EXPECT_EQ(finish(*digest), getDigest("crc32", toBytes("sample")));
    CDigestType_CRC32 type;
    static_cast<IDigestType&>(type) = CDigestType_MD4();
    EXPECT_EQ(type.createDigest()->getDigestSize(), 4);
}

TEST(ObjectModel, CopiedAndMovedSignaturesErrorsAndConfigurations_AreEqualToTheirSources) {
    Signer signer;
    signer.size = 20;
    EXPECT_EQ(copyAndMove(signer).getMaxSignatureSize(), 20);
    Verifier verifier;
    verifier.result = true;
    EXPECT_TRUE(copyAndMove(verifier).finish("", 0));
    const auto algo = ul::make<COpenSSLSignatureAlgo>(copyAndMove(COpenSSLSignatureAlgo(EVP_sha1())));
    const Bytes signature = sign(algo, readKey("rsa1024"), toBytes("data"));
    EXPECT_TRUE(verify(createRSA_SHA1(), readPublicKey("rsa1024"), toBytes("data"), signature));
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("a.ini", "[a]\nb=1\n");
    writeSignatureFile(path, "rsa1024");
    CSignedConfig config = copyAndMove(CSignedConfig(path, readPublicKey("rsa1024"), false));
    EXPECT_TRUE(config.getValue("a/b") == "1");
    const CSignedConfigSignatureError error(path);
    EXPECT_STREQ(copyAndMove(error).what(), error.what());
    const COpenSSLVersionMismatchError mismatch("MD5", 1, 2);
    EXPECT_STREQ(copyAndMove(mismatch).what(), mismatch.what());
    EXPECT_FALSE(copyAndMove(Algorithm()).beginVerify("")->finish("", 0));
    // They have no values.
    copyAndMove(COpenSSLInit());
    copyAndMove(COpenSSLInit::CCleaner());
}

TEST(ObjectModel, CopyOfACipher_EncryptsAsItsSource_AndOutlivesIt) {
    ul::P<sarn::CCipher_BlowFishCBC> source = ul::make<sarn::CCipher_BlowFishCBC>();
    const Bytes expected = encryptSample(*source);
    const ul::P<sarn::COpenSSLCipher> copy = ul::make<sarn::CCipher_BlowFishCBC>(*source);
    const auto assigned = ul::make<sarn::COpenSSLCipher>(sarn::CCipher_AES256CBC());
    *assigned = *source;
    source = nullptr;
    for (const ul::P<sarn::COpenSSLCipher>& cipher : {copy, assigned}) {
        EXPECT_EQ(encryptSample(*cipher), expected);
        EXPECT_EQ(cipher->getID(), "bfcbc");
        EXPECT_EQ(cipher->getBlockSize(), 8);
    }
}

TEST(ObjectModel, MovedCipher_EncryptsAsItsSource_WhichOnlyLosesItsIdentifier) {
    sarn::CCipher_Cast128CBC source;
    const Bytes expected = encryptSample(source);
    sarn::CCipher_Cast128CBC target(std::move(source));
    sarn::COpenSSLCipher assigned{sarn::CCipher_AES256CBC()};
    EXPECT_EQ(target.getID(), "cast128cbc");
    EXPECT_EQ(encryptSample(target), expected);
    assigned = std::move(target);
    EXPECT_EQ(assigned.getID(), "cast128cbc");
    EXPECT_EQ(encryptSample(assigned), expected);
    for (sarn::COpenSSLCipher* const moved : {&source, &target}) {
        EXPECT_TRUE(moved->getID().isEmpty());
        EXPECT_EQ(encryptSample(*moved), expected);
    }
}

} // namespace sarn_test
