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

} // namespace sarn_test
