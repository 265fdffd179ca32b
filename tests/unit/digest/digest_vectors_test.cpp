// SPDX-License-Identifier: Apache-2.0
// Results beside those of other implementations and beside the published ones.
#include "support/digest_test_data.h"

#include <ostream>
#include <random>

namespace sarn_test {

namespace {

/// Digests by identifier and size of the input, combinations included.
std::map<std::string, std::map<int, Bytes>> readDigests() {
    std::map<std::string, std::map<int, Bytes>> digests;
    for (const Vector& vector : readVectors("digests.vec", {"size", "digest"}))
        digests[vector.getSection()][vector.getInt("size")] = vector.getBytes("digest");
    const auto combine = [&digests](const std::string& id, const std::string& first, const std::string& second) {
        for (const auto& [size, digest] : digests.at(first))
            digests[id][size] = join(digest, digests.at(second).at(size));
    };
    combine("md4-sha1", "md4", "sha1");
    combine("md4-sha1-adler32", "md4-sha1", "adler32");
    return digests;
}

/// Feeds `bytes` in pieces whose sizes `next` gives; if `saves`, a new digest takes the state over after each.
template <class Next>
std::string digestInPieces(const std::string& id, const Bytes& bytes, Next next, bool saves = false) {
    ul::P<sarn::IDigest> digest = createDigest(id);
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t size = std::min<std::size_t>(static_cast<std::size_t>(next()), bytes.size() - at);
        digest->update(bytes.data() + at, static_cast<int>(size));
        at += size;
        if (saves)
            digest = resumeDigest(id, storeState(*digest));
    }
    return toHex(finish(*digest));
}

class DigestVectors : public testing::TestWithParam<const char*> {
protected:
    static const std::map<int, Bytes>& getExpected() {
        static const auto digests = readDigests();
        return digests.at(GetParam());
    }
};

struct Published {
    const char* source;
    const char* id;
    std::string text;
    const char* digest;
};

std::string repeat(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

const std::string letters = "abcdefghijklmnopqrstuvwxyz";
const std::string capitalsLettersDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
const std::string digits = "1234567890";
const std::string twoBlocks = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
const std::string twoLongBlocks =
    "abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqrstnopqrstu";

const Published published[] = {
    {"RFC 1320", "md4", "", "31d6cfe0d16ae931b73c59d7e0c089c0"},
    {"RFC 1320", "md4", "a", "bde52cb31de33e46245e05fbdbd6fb24"},
    {"RFC 1320", "md4", "abc", "a448017aaf21d8525fc10ae87aa6729d"},
    {"RFC 1320", "md4", "message digest", "d9130a8164549fe818874806e1c7014b"},
    {"RFC 1320", "md4", letters, "d79e1c308aa5bbcdeea8ed63df412da9"},
    {"RFC 1320", "md4", capitalsLettersDigits, "043f8582f241db351ce627e153e7f0e4"},
    {"RFC 1320", "md4", repeat(digits, 8), "e33b4ddc9c38f2199c3e7b164fcc0536"},
    {"RFC 1321", "md5", "", "d41d8cd98f00b204e9800998ecf8427e"},
    {"RFC 1321", "md5", "a", "0cc175b9c0f1b6a831c399e269772661"},
    {"RFC 1321", "md5", "abc", "900150983cd24fb0d6963f7d28e17f72"},
    {"RFC 1321", "md5", "message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
    {"RFC 1321", "md5", letters, "c3fcd3d76192e4007dfb496cca67e13b"},
    {"RFC 1321", "md5", capitalsLettersDigits, "d174ab98d277d9f5a5611c2c9f419d9f"},
    {"RFC 1321", "md5", repeat(digits, 8), "57edf4a22be3c955ac49da2e2107b67a"},
    {"RFC 3174", "sha1", "abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
    {"RFC 3174", "sha1", twoBlocks, "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
    {"RFC 3174", "sha1", std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
    {"RFC 3174", "sha1", repeat("01234567", 80), "dea356a2cddd90c7a7ecedc5ebb563934f460452"},
    {"FIPS 180-4", "sha1", "", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
    {"FIPS 180-4", "sha256", "", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
    {"FIPS 180-4", "sha256", "abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
    {"FIPS 180-4", "sha256", twoBlocks, "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
    {"FIPS 180-4", "sha256", twoLongBlocks, "cf5b16a778af8380036ce59e7b0492370b249b11e8f07a51afac45037afee9d1"},
    {"FIPS 180-4", "sha256", std::string(1000000, 'a'),
     "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    // The check value of the catalogues of CRCs, least significant byte first, and Adler-32 by RFC 1950 worked by hand.
    {"CRC-32", "crc32", "123456789", "2639f4cb"},
    {"RFC 1950", "adler32", "abc", "27014d02"},
};

class PublishedDigests : public testing::TestWithParam<Published> {};

/// For messages of failures.
void PrintTo(const Published& vector, std::ostream* out) {
    *out << vector.source;
}

std::string getVectorName(const testing::TestParamInfo<Published>& info) {
    return std::string(info.param.id) + "_" + std::to_string(info.index);
}

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
            EXPECT_EQ(digestInPieces(GetParam(), input, [piece] { return piece; }), toHex(getExpected().at(size)))
                << size << " by " << piece;
    }
}

TEST_P(DigestVectors, InPiecesOfRandomSizes_GiveTheSameDigest) {
    std::mt19937 random(20);
    std::uniform_int_distribution<int> sizes(0, 5000);
    const Bytes input = makePattern((1 << 20) + 1);
    for (int round = 0; round < 5; ++round)
        EXPECT_EQ(digestInPieces(GetParam(), input, [&] { return sizes(random); }),
                  toHex(getExpected().at((1 << 20) + 1)));
}

INSTANTIATE_TEST_SUITE_P(All, DigestVectors, testing::ValuesIn(digestIDs), getDigestTestName);

TEST_P(PublishedDigests, InOnePieceAndByteByByte_AreGiven) {
    const Bytes text = toBytes(GetParam().text);
    EXPECT_EQ(toHex(getDigest(GetParam().id, text)), GetParam().digest);
    EXPECT_EQ(digestInPieces(GetParam().id, text, [] { return 1; }), GetParam().digest);
}

TEST_P(PublishedDigests, WithTheStateSavedAndResumedBetweenRandomPieces_AreGiven) {
    std::mt19937 random(7);
    const Bytes text = toBytes(GetParam().text);
    const unsigned largest = std::max(static_cast<unsigned>(text.size()) / 5, 3U);
    for (int round = 0; round < 20; ++round)
        ASSERT_EQ(digestInPieces(
                      GetParam().id, text, [&] { return random() % largest; }, true),
                  GetParam().digest)
            << "round " << round;
}

INSTANTIATE_TEST_SUITE_P(All, PublishedDigests, testing::ValuesIn(published), getVectorName);

} // namespace sarn_test
