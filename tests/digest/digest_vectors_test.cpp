// SPDX-License-Identifier: Apache-2.0
// Results beside those of other implementations.
#include "support/digest_test_data.h"

#include <gtest/gtest.h>

#include <random>

namespace sarn_test {

namespace {

/// Digests by identifier and size of the input, combinations included.
std::map<std::string, std::map<int, Bytes>> readDigests() {
    std::map<std::string, std::map<int, Bytes>> digests;
    for (const Vector& vector : readVectors("digests.vec", {"size", "digest"}))
        digests[vector.getSection()][vector.getInt("size")] = vector.getBytes("digest");
    const auto combine = [&digests](const std::string& id, const std::string& first, const std::string& second) {
        for (const auto& [size, digest] : digests.at(first)) {
            Bytes both = digest;
            const Bytes& tail = digests.at(second).at(size);
            both.insert(both.end(), tail.begin(), tail.end());
            digests[id][size] = both;
        }
    };
    combine("md4-sha1", "md4", "sha1");
    combine("md4-sha1-adler32", "md4-sha1", "adler32");
    return digests;
}

/// Feeds `bytes` in pieces whose sizes `next` gives.
template <class Next>
Bytes digestInPieces(const std::string& id, const Bytes& bytes, Next next) {
    const ul::P<sarn::IDigest> digest = createDigest(id);
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t size = std::min<std::size_t>(static_cast<std::size_t>(next()), bytes.size() - at);
        digest->update(bytes.data() + at, static_cast<int>(size));
        at += size;
    }
    return finish(*digest);
}

class DigestVectors : public testing::TestWithParam<const char*> {
protected:
    static const std::map<int, Bytes>& getExpected() {
        static const auto digests = readDigests();
        return digests.at(GetParam());
    }
};

} // namespace

TEST_P(DigestVectors, InOnePiece_GiveTheDigestOfOtherImplementations) {
    ASSERT_EQ(getExpected().size(), 302U);
    for (const auto& [size, digest] : getExpected())
        EXPECT_EQ(toHex(getDigest(GetParam(), makePattern(size))), toHex(digest)) << size;
}

TEST_P(DigestVectors, InPiecesOfEverySize_GiveTheSameDigest) {
    for (const int size : {0, 1, 63, 64, 65, 127, 128, 300, (1 << 20) + 1}) {
        const Bytes input = makePattern(size);
        for (const int piece : {1, 63, 64, 65, 2047, 2048, 2049})
            EXPECT_EQ(digestInPieces(GetParam(), input, [piece] { return piece; }), getExpected().at(size))
                << size << " by " << piece;
    }
}

TEST_P(DigestVectors, InPiecesOfRandomSizes_GiveTheSameDigest) {
    std::mt19937 random(20);
    std::uniform_int_distribution<int> sizes(0, 5000);
    const Bytes input = makePattern((1 << 20) + 1);
    for (int round = 0; round < 5; ++round)
        EXPECT_EQ(digestInPieces(GetParam(), input, [&] { return sizes(random); }), getExpected().at((1 << 20) + 1));
}

INSTANTIATE_TEST_SUITE_P(All, DigestVectors, testing::ValuesIn(digestIDs), getDigestTestName);

TEST(DigestVectors, MD4_GivesThePublishedDigests) {
    // RFC 1320, A.5.
    const std::pair<const char*, const char*> vectors[] = {
        {"", "31d6cfe0d16ae931b73c59d7e0c089c0"},
        {"a", "bde52cb31de33e46245e05fbdbd6fb24"},
        {"abc", "a448017aaf21d8525fc10ae87aa6729d"},
        {"message digest", "d9130a8164549fe818874806e1c7014b"},
        {"abcdefghijklmnopqrstuvwxyz", "d79e1c308aa5bbcdeea8ed63df412da9"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "043f8582f241db351ce627e153e7f0e4"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "e33b4ddc9c38f2199c3e7b164fcc0536"}};
    for (const auto& [text, digest] : vectors)
        EXPECT_EQ(toHex(getDigest("md4", toBytes(std::string(text)))), digest) << text;
}

TEST(DigestVectors, HashesOfNothingAndAbc_AreThePublishedOnes) {
    // RFC 1321, FIPS 180-4.
    const Bytes abc = toBytes(std::string("abc"));
    EXPECT_EQ(toHex(getDigest("md5", {})), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(toHex(getDigest("md5", abc)), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(toHex(getDigest("sha1", {})), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(toHex(getDigest("sha1", abc)), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(toHex(getDigest("sha256", abc)), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

} // namespace sarn_test
