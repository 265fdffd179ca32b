// SPDX-License-Identifier: Apache-2.0
// Results of other implementations, and published ones.
#include "support/digest_test_data.h"

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

/// Feeds `bytes` in pieces of this size.
std::string digestInPieces(const std::string& id, const Bytes& bytes, std::size_t pieceSize) {
    const ul::P<sarn::IDigest> digest = createDigest(id);
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t size = std::min(pieceSize, bytes.size() - at);
        digest->update(bytes.data() + at, static_cast<int>(size));
        at += size;
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
    std::string id;
    Bytes text;
    std::string digest;
    std::string name;
};

std::vector<Published> readPublished() {
    std::vector<Published> published;
    for (const Vector& vector : readVectors("digests_published.vec", {"text", "repeat", "digest"})) {
        std::string text;
        for (int i = vector.has("repeat") ? vector.getInt("repeat") : 1; i > 0; --i)
            text += vector.getText("text");
        published.push_back({vector.getSection(), toBytes(text), vector.getText("digest"), vector.describe()});
    }
    return published;
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
        for (const std::size_t piece : {1U, 63U, 64U, 65U, 2047U, 2048U, 2049U})
            EXPECT_EQ(digestInPieces(GetParam(), input, piece), toHex(getExpected().at(size)))
                << size << " by " << piece;
    }
}

INSTANTIATE_TEST_SUITE_P(All, DigestVectors, testing::ValuesIn(digestIDs), getDigestTestName);

TEST(PublishedDigests, InOnePieceAndByteByByte_AreMet) {
    for (const Published& published : readPublished()) {
        EXPECT_EQ(toHex(getDigest(published.id, published.text)), published.digest) << published.name;
        EXPECT_EQ(digestInPieces(published.id, published.text, 1), published.digest) << published.name;
    }
}

} // namespace sarn_test
