// SPDX-License-Identifier: Apache-2.0
// Types of digests, the rules of running digests, and the results of other implementations.
#include "support/digest_test_data.h"

#include <sstream>

namespace sarn_test {

namespace {

const Bytes abc = toBytes("abc");

struct RunningDigest : testing::TestWithParam<const char*> {
    void expectUnreadable() {
        unsigned char out[40];
        constexpr char notFinished[] = "IDigest::finish has not been called yet.";
        expectErrorOf<ul::CBadStateError>(notFinished, [&] { digest->getDigestData(); });
        expectErrorOf<ul::CBadStateError>(notFinished, [&] { digest->storeDigestData(out); });
    }
    void expectDigestOf(const Bytes& bytes) { EXPECT_EQ(toHex(finish(*digest)), toHex(getDigest(GetParam(), bytes))); }

    const ul::P<sarn::IDigest> digest = createDigest(GetParam());
};

std::vector<std::string> splitID(const std::string& id) {
    std::istringstream stream(id);
    std::vector<std::string> parts;
    for (std::string part; std::getline(stream, part, '-');)
        parts.push_back(part);
    return parts;
}

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

struct DigestVectors : testing::TestWithParam<const char*> {
    static const std::map<int, Bytes>& getExpected() {
        static const auto digests = readDigests();
        return digests.at(GetParam());
    }
};

} // namespace

TEST_P(RunningDigest, UpdateAfterFinish_IsRefusedUntilReset) {
    digest->finish();
    const Bytes input = makePattern(5000);
    constexpr char finished[] = "IDigest::update cannot be called after finish has been called.";
    for (const int length : {0, 3, 2048, 5000, -1, INT_MIN})
        expectErrorOf<ul::CBadStateError>(finished, [&] { digest->update(input.data(), length); });
    expectErrorOf<ul::CBadStateError>(finished, [&] { digest->update(nullptr, 0); });
    digest->reset();
    feed(*digest, abc);
    expectDigestOf(abc);
}

TEST_P(RunningDigest, ResultBeforeFinish_IsRefused) {
    expectUnreadable();
    feed(*digest, abc);
    expectUnreadable();
    digest->finish();
    digest->reset();
    expectUnreadable();
}

TEST_P(RunningDigest, FinishTwice_GivesTheSameResultAsOnce_AlsoByItsPointer) {
    feed(*digest, abc);
    expectDigestOf(abc);
    const unsigned char* const data = digest->getDigestData();
    expectDigestOf(abc);
    EXPECT_EQ(getData(*digest), getResult(*digest));
    EXPECT_EQ(digest->getDigestData(), data);
}

TEST_P(RunningDigest, StoreDigestData_WritesExactlyItsSize) {
    digest->finish();
    Bytes out(static_cast<std::size_t>(digest->getDigestSize()) + 16, 0xEE);
    digest->storeDigestData(out.data() + 8);
    EXPECT_EQ(out, join(Bytes(8, 0xEE), join(getResult(*digest), Bytes(8, 0xEE))));
}

TEST_P(RunningDigest, ResetHalfWay_DropsTheInput) {
    feed(*digest, makePattern(1000));
    digest->reset();
    feed(*digest, abc);
    expectDigestOf(abc);
}

TEST_P(RunningDigest, NegativeSize_IsRefusedByTheNameOfTheOperationAndChangesNothing) {
    const std::string id = splitID(GetParam())[0];
    const std::string type = id == "adler32" ? "CDigest_Adler32" : id == "crc32" ? "CDigest_CRC32" : "TDigest_OpenSSL";
    feed(*digest, abc);
    for (const int length : {-1, INT_MIN})
        expectInvalidArg(type + "::update", "invalid data size", [&] { digest->update(abc.data(), length); });
    expectDigestOf(abc);
}

TEST_P(RunningDigest, NullDataOfNoLength_IsIgnoredByHashesAndResetsChecksums) {
    feed(*digest, abc);
    digest->update(nullptr, 0);
    feed(*digest, makePattern(10));
    Bytes expected;
    for (const std::string& part : splitID(GetParam())) {
        const bool isChecksum = part == "adler32" || part == "crc32";
        expected = join(expected, getDigest(part, isChecksum ? makePattern(10) : join(abc, makePattern(10))));
    }
    EXPECT_EQ(toHex(finish(*digest)), toHex(expected));
}

INSTANTIATE_TEST_SUITE_P(All, RunningDigest, testing::ValuesIn(digestIDs), getDigestTestName);

TEST(DigestTypes, OfTheRegistry_HaveTheirSizesAndCreateDigestsOfTheirOwn) {
    const std::pair<const char*, int> types[] = {
        {"md4", 16},    {"md5", 16},  {"sha1", 20},     {"sha256", 32},
        {"adler32", 4}, {"crc32", 4}, {"md4-sha1", 36}, {"md4-sha1-adler32", 40}};
    for (const auto& [id, size] : types) {
        const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType(id);
        EXPECT_EQ(type->getDigestSize(), size) << id;
        const ul::P<sarn::IDigest> digest = type->createDigest();
        EXPECT_EQ(digest->getDigestSize(), size) << id;
        EXPECT_EQ(digest->getType(), type) << "the digest's type is the one that created it";
    }
}

TEST(DigestTypes, RunningDigest_KeepsItsTypeAlive) {
    const ul::P<sarn::IDigest> digest = ul::make<sarn::CDigestType_MD4_SHA1>()->createDigest();
    EXPECT_EQ(digest->getType()->getDigestSize(), 36);
    feed(*digest, toBytes("abc"));
    EXPECT_EQ(finish(*digest), getDigest("md4-sha1", toBytes("abc")));
}

TEST(DigestTypes, CopiesAndMovedOnes_CreateTheSameDigestsAndOutliveTheirSource) {
    const auto expectSame = [](auto type, const char* id) {
        using Type = std::decay_t<decltype(*type)>;
        const ul::P<Type> copy = ul::make<Type>(*type);
        const ul::P<Type> moved = ul::make<Type>(std::move(*ul::make<Type>(*type)));
        const ul::P<Type> assigned = ul::make<Type>();
        *assigned = *type;
        *assigned = std::move(*ul::make<Type>(*type));
        type = nullptr;
        for (const ul::P<Type>& other : {copy, moved, assigned}) {
            EXPECT_EQ(other->getID(), id);
            const ul::P<sarn::IDigest> digest = other->createDigest();
            feed(*digest, makePattern(10));
            EXPECT_EQ(finish(*digest), getDigest(id, makePattern(10)));
        }
    };
    expectSame(ul::make<sarn::CDigestType_MD4_SHA1>(), "md4-sha1");
    expectSame(ul::make<sarn::CDigestType_MD4_SHA1_Adler32>(), "md4-sha1-adler32");
    expectSame(ul::make<sarn::CDigestType_SHA256>(), "sha256");
}

TEST(Checksums, NullDataOfAnyLength_ResetsThem_AlsoInACombination) {
    using Type = sarn::TDigestTypeCombiner<sarn::CDigestType_Adler32, sarn::CDigestType_CRC32>;
    for (const int length : {0, 1, 100, 2048, 5000, 100000, INT_MAX, -1, INT_MIN}) {
        for (const auto& [digest, ofNothing] : {std::pair(createDigest("adler32"), "01000000"),
                                                {createDigest("crc32"), "00000000"},
                                                {ul::make<Type>()->createDigest(), "0100000000000000"}}) {
            feed(*digest, makePattern(100));
            digest->update(nullptr, length);
            EXPECT_EQ(toHex(finish(*digest)), ofNothing) << length;
        }
    }
}

TEST(Checksums, Copy_IsIndependent) {
    const ul::P<sarn::CDigestType_Adler32> type = ul::make<sarn::CDigestType_Adler32>();
    sarn::CDigest_Adler32 original(type.get());
    original.update("ab", 2);
    sarn::CDigest_Adler32 copy(original);
    original.update("x", 1);
    copy.update("c", 1);
    EXPECT_EQ(finish(copy), getDigest("adler32", abc));
    EXPECT_NE(finish(original), getResult(copy));
}

TEST(Combiner, HostsOwnCombination_JoinsIdentifiersSizesAndResults) {
    using Type = sarn::TDigestTypeCombiner<sarn::CDigestType_CRC32, sarn::CDigestType_SHA256>;
    const ul::P<Type> type = ul::make<Type>();
    EXPECT_EQ(type->getID(), "crc32-sha256");
    EXPECT_EQ(type->getDigestSize(), 36);
    const ul::P<sarn::IDigest> digest = type->createDigest();
    feed(*digest, abc);
    EXPECT_EQ(finish(*digest), join(getDigest("crc32", abc), getDigest("sha256", abc)));
}

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
    for (const Vector& vector : readVectors("digests_published.vec", {"text", "repeat", "digest"})) {
        std::string text;
        for (int i = vector.has("repeat") ? vector.getInt("repeat") : 1; i > 0; --i)
            text += vector.getText("text");
        for (const std::size_t piece : {text.size(), std::size_t{1}})
            EXPECT_EQ(digestInPieces(vector.getSection(), toBytes(text), piece), vector.getText("digest"))
                << vector.describe();
    }
}

} // namespace sarn_test
