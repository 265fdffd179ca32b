// SPDX-License-Identifier: Apache-2.0
// Each short form and the operation that it stands for, and digests of files.
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"
#include "support/temp_folder.h"

#include "sarn/host.h"

#include <fstream>

namespace sarn_test {

TEST(Encrypt, OfBytes_IsReadByTheDocumentedOperationAndByDecrypt) {
    for (const char* const id : {"aes256cbc", "aes128cbc", "bfcbc", "cast128cbc", "null"}) {
        const ul::P<sarn::ICipher> cipher = getAnyCipher(id);
        const TestKey key(cipher->getKeySize());
        const auto encrypted = sarn::encrypt(id, key, makePattern(100));
        EXPECT_EQ(runCipher(*cipher, decrypting, toBytes(encrypted), nullptr), makePattern(100));
        EXPECT_EQ(toBytes(sarn::decrypt(id, key, encrypted)), makePattern(100));
    }
}

TEST(Encrypt, WithAWrongIdOrKey_RaisesTheErrorOfTheDocumentedOperation) {
    expectError("Unknown cipher id 'rot13'.", [] { sarn::encrypt("rot13", TestKey(32), "data"); });
    expectInvalidArg("COpenSSLCipher::encrypt", "invalid key size",
                     [] { sarn::encrypt("aes256cbc", TestKey(31), "data"); });
    expectInvalidArg("COpenSSLCipher::decrypt", "invalid input data size",
                     [] { sarn::decrypt("aes256cbc", TestKey(32), "data"); });
}

TEST(Digest, OfBytes_IsTheResultOfTheDocumentedOperation) {
    for (const char* const id : digestIDs)
        for (const int size : {0, 1, 100})
            EXPECT_EQ(toBytes(sarn::digest(id, makePattern(size))), getDigest(id, makePattern(size))) << id;
    EXPECT_EQ(ul::toHex(sarn::digest("md5", "a")), "0cc175b9c0f1b6a831c399e269772661"); // RFC 1321
    expectError("Unknown digest type id 'sha0'.", [] { sarn::digest("sha0", "data"); });
}

TEST(Feed, OfNoBytes_ChangesNothing) {
    for (const char* const id : digestIDs) {
        const ul::P<sarn::IDigest> digest = createDigest(id, toBytes("abc"));
        sarn::feed(*digest, {});
        sarn::feed(*digest, Bytes());
        EXPECT_EQ(toBytes(sarn::finish(*digest)), getDigest(id, toBytes("abc"))) << id;
    }
}

TEST(HmacSHA1, OfAMessage_IsTheResultOfTheDocumentedOperation) {
    // RFC 2202, test case 2.
    EXPECT_EQ(ul::toHex(sarn::hmacSHA1(ul::toCryptBuffer("Jefe"), "what do ya want for nothing?")),
              "effcdf6ae5eb2fa2d27416d5f184df9c259a7c79");
    Buffer expected;
    sarn::calcHMAC_SHA1(expected, "", 0, "", 0);
    EXPECT_EQ(toBytes(sarn::hmacSHA1({}, {})), toBytes(expected));
}

// The documented operation takes the message first: swapped arguments do not compile here.
static_assert(!std::is_invocable_v<decltype(sarn::hmacSHA1), std::string, ul::TCryptBuffer<unsigned char>>);
// A key must be in a buffer that wipes it.
static_assert(!std::is_invocable_v<decltype(sarn::hmacSHA1), ul::TBuffer<unsigned char>, std::string>);

TEST(Base64, OfBytes_IsTheTextOfTheDocumentedOperation) {
    for (int size = 0; size < 70; ++size) {
        const Bytes bytes = makePattern(size);
        const std::string text = sarn::base64(bytes);
        EXPECT_EQ(text, sarn::base64Encode(bytes.data(), size, true, false).toUTF8());
        EXPECT_EQ(toBytes(sarn::fromBase64(text)), bytes);
    }
    expectInvalidArg("base64Decode", "invalid base64 data", [] { sarn::fromBase64("aGVsb"); });
}

TEST(DeriveKey, FromAPassword_IsTheKeyOfTheDocumentedOperation) {
    // RFC 6070.
    EXPECT_EQ(ul::toHex(sarn::deriveKey("password", "salt", 2, 20)), "ea6c014dc72d6f8ccd1ed92ace1d41f0d8de8957");
    EXPECT_EQ(ul::toHex(sarn::deriveKey("password", "salt", 2, 1)), "ea");
    unsigned char key[16];
    sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("", 0, "", 0, 3, 16, key);
    EXPECT_EQ(toBytes(sarn::deriveKey({}, {}, 3, 16)), Bytes(key, key + 16));
    EXPECT_EQ(toBytes(sarn::deriveKey(ul::CSecretText("p\xC3\xA4ss").toUTF8(), "salt", 1, 16)),
              toBytes(sarn::deriveKey("p\xC3\xA4ss", "salt", 1, 16)));
}

TEST(DeriveKey, OfNoIterationsOrNoKey_IsRefused) {
    for (const int number : {0, -1, INT_MIN}) {
        expectInvalidArg("deriveKey", "invalid iteration count",
                         [&] { sarn::deriveKey("password", "salt", number, 16); });
        expectInvalidArg("deriveKey", "invalid key size", [&] { sarn::deriveKey("password", "salt", 1, number); });
    }
}

TEST(DigestFile, OfAnySize_IsTheDigestOfItsBytes) {
    const TempFolder folder;
    for (const int size : {0, 1, 65535, 65536, 65537, 200000}) {
        const ul::CWindowsPath path = folder.write("file", makeText(size));
        for (const char* const id : digestIDs)
            EXPECT_EQ(toBytes(sarn::digestFile(id, path)), getDigest(id, makePattern(size))) << id << " of " << size;
    }
}

TEST(DigestFile, OfAFileThatIsNotThere_RaisesTheFileError) {
    const TempFolder folder;
    EXPECT_THROW(sarn::digestFile("sha1", folder.getPath("none")), ul::CFileError);
}

TEST(DigestFile, Progress_GrowsToTheWholeAndIsNotCalledForAnEmptyFile) {
    const TempFolder folder;
    using Progress = std::pair<std::int64_t, std::int64_t>;
    std::vector<Progress> calls;
    const auto note = [&](std::int64_t done, std::int64_t whole) { calls.emplace_back(done, whole); };
    sarn::digestFile("sha1", folder.write("empty", ""), note);
    EXPECT_TRUE(calls.empty());
    sarn::digestFile("sha1", folder.write("file", std::string(150000, 'x')), note);
    EXPECT_EQ(calls, (std::vector<Progress>{{65536, 150000}, {131072, 150000}, {150000, 150000}}));
}

#ifdef __linux__
TEST(DigestFile, Progress_OfAFileWithoutASize_IsNeverMoreThanTheWhole) {
    int calls = 0;
    sarn::digestFile("sha1", ul::path("/proc/self/status"), [&](std::int64_t done, std::int64_t whole) {
        ++calls;
        EXPECT_LE(done, whole);
    });
    EXPECT_GE(calls, 1);
}
#endif

TEST(DigestFile, ExceptionOfTheProgress_EndsTheCall) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("file", std::string(150000, 'x'));
    int calls = 0;
    const auto cancel = [&](std::int64_t, std::int64_t) {
        ++calls;
        throw std::runtime_error("cancelled");
    };
    EXPECT_THROW(sarn::digestFile("sha1", path, cancel), std::runtime_error);
    EXPECT_EQ(calls, 1);
}

TEST(DigestFile, OfAFileThatGrowsMeanwhile_IsTheDigestOfAllOfIt) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("file", "only ");
    bool hasGrown = false;
    const auto result = sarn::digestFile("sha1", path, [&](std::int64_t done, std::int64_t whole) {
        EXPECT_LE(done, whole);
        if (!std::exchange(hasGrown, true))
            std::ofstream(ul::native(path), std::ios::binary | std::ios::app) << "copy";
    });
    EXPECT_EQ(toBytes(result), getDigest("sha1", toBytes("only copy")));
}

TEST(FeedFile, CalledAgain_ReadsTheBytesThatWereAdded) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("file", "only ");
    ul::CWindowsFileInStream file(path);
    const ul::P<sarn::IDigest> digest = sarn::createDigest("sha1");
    const auto ignore = [](std::int64_t, std::int64_t) {};
    sarn::feedFile(*digest, file, ignore);
    std::ofstream(ul::native(path), std::ios::binary | std::ios::app) << "copy";
    sarn::feedFile(*digest, file, ignore);
    EXPECT_EQ(toBytes(sarn::finish(*digest)), getDigest("sha1", toBytes("only copy")));
}

TEST(SaveState, OfEveryDigest_IsTheStateThatTheDocumentedOperationsWriteAndRead) {
    for (const char* const id : digestIDs) {
        const ul::P<sarn::IDigest> first = createDigest(id, makePattern(100));
        EXPECT_EQ(toBytes(sarn::saveState(*first)), storeState(*first)) << id;
        const ul::P<sarn::IDigest> second = sarn::createDigest(id);
        sarn::loadState(*second, sarn::saveState(*first));
        sarn::feed(*first, "more");
        sarn::feed(*second, "more");
        EXPECT_EQ(toBytes(sarn::finish(*second)), toBytes(sarn::finish(*first))) << id;
    }
}

TEST(LoadState, OfBytesThatAreNotOneState_RaisesAnErrorAndResetsTheDigest) {
    for (const char* const id : digestIDs) {
        const Bytes state = getRunningState(id);
        const Bytes longer = join(state, {0});
        const ul::P<sarn::IDigest> digest = sarn::createDigest(id);
        for (const Bytes& bad : {longer, cut(state, -1), Bytes(), withWord(state, 0, 2)}) {
            sarn::feed(*digest, "something");
            EXPECT_THROW(sarn::loadState(*digest, bad), ul::CError);
            sarn::feed(*digest, "abc");
            EXPECT_EQ(toBytes(sarn::finish(*digest)), getDigest(id, toBytes("abc")));
            digest->reset();
        }
        expectError("Bytes follow the digest state.", [&] { sarn::loadState(*digest, longer); });
        sarn::feed(*digest, "abc");
        expectInvalidArg("loadState", "data is too large", [&] { sarn::loadState(*digest, {"", INT_MAX + 1LL}); });
        EXPECT_EQ(toBytes(sarn::finish(*digest)), getDigest(id, Bytes()));
    }
}

} // namespace sarn_test
