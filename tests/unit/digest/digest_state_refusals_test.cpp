// SPDX-License-Identifier: Apache-2.0
// States that are refused, in the order of the checks, and unusual ones that are loaded.
#include "support/digest_test_data.h"

namespace sarn_test {

namespace {

void expectRefused(const char* id, const Bytes& state, const char* message) {
    SCOPED_TRACE(message);
    const ul::P<sarn::IDigest> digest = createDigest(id);
    expectError(message, [&] { loadState(*digest, state); });
    digest->reset();
    feed(*digest, toBytes("abc"));
    EXPECT_EQ(finish(*digest), getDigest(id, toBytes("abc"))) << "reset makes it usable again";
}

// Offsets in the state of a hash.
constexpr std::size_t versionAt = 0;
constexpr std::size_t opensslVersionAt = 4;
constexpr std::size_t digestSizeAt = 8;
constexpr std::size_t contextSizeAt = 12;
constexpr std::size_t contextAt = 16;
constexpr std::size_t md5ResultAt = contextAt + 92;

constexpr char badContext[] = "Bad OpenSSL digest context in state stream.";
constexpr char badResult[] = "Bad digest result length in state stream.";
constexpr char badCombination[] = "Unsupported version of TDigestCombined state data.";

/// Words that are refused at an offset of a running digest's state.
struct BadWords : Row {
    const char* id;
    std::size_t at;
    std::vector<unsigned> words;
    const char* message;
};

// clang-format off
const BadWords badWords[] = {
    {"FillOfMD4OutsideTheBlock", "md4", contextAt + 88, {64, 65, 255, 0x80000000, 0xFFFFFFFF}, badContext},
    {"FillOfMD5OutsideTheBlock", "md5", contextAt + 88, {64, 65, 255, 0x80000000, 0xFFFFFFFF}, badContext},
    {"FillOfSHA1OutsideTheBlock", "sha1", contextAt + 92, {64, 65, 255, 0x80000000, 0xFFFFFFFF}, badContext},
    {"FillOfSHA256OutsideTheBlock", "sha256", contextAt + 104, {64, 65, 255, 0x80000000, 0xFFFFFFFF}, badContext},
    {"AnotherResultSizeInTheContext", "sha256", contextAt + 108, {0, 28, 33, 0xFFFFFFFF}, badContext},
    {"NegativeResultLength", "md5", md5ResultAt, {0x80000000, 0xFFFFFFFF}, badResult},
    {"AnotherVersionOfAHash", "md5", versionAt, {0, 2}, "Unsupported OpenSSL digest state data version."},
    {"AnotherVersionOfAdler32", "adler32", versionAt, {0, 2}, "Unsupported Adler32 digest state data version."},
    {"AnotherVersionOfCRC32", "crc32", versionAt, {0, 2}, "Unsupported CRC32 digest state data version."},
    {"AnotherVersionOfACombination", "md4-sha1", versionAt, {0, 2}, badCombination},
    {"AnotherVersionOfACombinationOfThree", "md4-sha1-adler32", versionAt, {0, 2}, badCombination},
};
// clang-format on

class BadDigestStateWord : public testing::TestWithParam<BadWords> {};

} // namespace

TEST_P(BadDigestStateWord, IsRefusedAndResetMakesTheDigestUsable) {
    for (const unsigned word : GetParam().words)
        expectRefused(GetParam().id, withWord(getRunningState(GetParam().id), GetParam().at, word), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(All, BadDigestStateWord, testing::ValuesIn(badWords), getRowName<BadWords>);

TEST(OpenSSLDigestState, Refusals_ComeInTheirOrder) {
    Bytes state = withWord(getRunningState("sha1"), contextSizeAt, 92);
    expectRefused("sha1", state, "Bad OpenSSL digest context size in state stream.");
    state = withWord(state, digestSizeAt, 16);
    expectRefused("sha1", state, "Bad OpenSSL digest size in state stream.");
    state = withWord(state, opensslVersionAt, 0x10100000);
    EXPECT_THROW(loadState(*createDigest("sha1"), state), sarn::COpenSSLVersionMismatchError);
    state = withWord(state, versionAt, 2);
    expectRefused("sha1", state, "Unsupported OpenSSL digest state data version.");
}

TEST(OpenSSLDigestState, OfAnotherOpenSSL_RaisesAnErrorWithBothVersions_AlsoWithinACombination) {
    for (const auto& [id, offset] : {std::pair("md5", opensslVersionAt), std::pair("md4-sha1", 4 + opensslVersionAt)}) {
        const Bytes state = withWord(getRunningState(id), offset, 0x10100000);
        const ul::P<sarn::IDigest> digest = createDigest(id);
        expectError<sarn::COpenSSLVersionMismatchError>(
            "OpenSSL version mismatch",
            {"object", "digest state data", "actualVersion", "0x10100000", "expectedVersion", "0x1010102F"},
            [&] { loadState(*digest, state); });
        digest->reset();
        EXPECT_EQ(finish(*digest), getDigest(id, {}));
    }
}

TEST(OpenSSLDigestState, VersionMismatchHeldByPointer_IsThrownWithItsOwnType) {
    const ul::P<ul::CError> held = sarn::COpenSSLVersionMismatchError("x", -1, 2).clone();
    EXPECT_THROW(held->throwClone(), sarn::COpenSSLVersionMismatchError);
    EXPECT_EQ(getProp(*held, "actualVersion"), "0xFFFFFFFF");
}

TEST(OpenSSLDigestState, OfMD5_IsRefusedBySHA1AndLoadedByMD4) {
    expectRefused("sha1", getRunningState("md5"), "Bad OpenSSL digest size in state stream.");
    EXPECT_EQ(finish(*resumeDigest("md4", getRunningState("md5"))).size(), 16U);
    EXPECT_EQ(finish(*resumeDigest("md5", getRunningState("md4"))).size(), 16U);
}

TEST(OpenSSLDigestState, BadFlagsAndABadFillTogether_AreRefusedForTheFlags) {
    const Bytes state = withWord(getRunningState("md5"), contextAt + 88, 64);
    for (const std::size_t fromEnd : {1U, 2U}) {
        Bytes damaged = state;
        damaged.at(state.size() - fromEnd) = 2;
        expectErrorOf<ul::CError>("Invalid boolean in data stream.", [&] { loadState(*createDigest("md5"), damaged); });
    }
    expectErrorOf<ul::CError>("Unexpected end of stream.", [&] { loadState(*createDigest("md5"), cut(state, -1)); });
}

TEST(OpenSSLDigestState, ThatIsNotInitialized_IsStoredAgainUnchanged_AndResetMakesItUsable) {
    Bytes state = getRunningState("md5");
    state.at(state.size() - 2) = 0;
    const ul::P<sarn::IDigest> digest = resumeDigest("md5", state);
    EXPECT_EQ(toHex(storeState(*digest)), toHex(state));
    digest->reset();
    EXPECT_EQ(toHex(storeState(*digest)), toHex(storeState(*createDigest("md5"))));
}

TEST(OpenSSLDigestState, ResultLengthBeyondTheStream_IsRefusedWithoutAllocatingIt) {
    const Bytes state = withWord(getRunningState("md5"), md5ResultAt, 0x7FFFFFFF);
    // It is read in pieces of 4096 bytes.
    expectError("Unexpected end of stream.", {"size", "4096", "available", "2"},
                [&] { loadState(*createDigest("md5"), state); });
}

TEST(OpenSSLDigestState, ResultOfAnotherLength_IsReturnedInTheDigestsSize) {
    const ul::P<sarn::IDigest> source = createDigest("md5");
    source->finish();
    for (const int length : {0, 5, 15, 17, 10000}) {
        const Bytes start =
            withWord(cut(storeState(*source), md5ResultAt + 4), md5ResultAt, static_cast<unsigned>(length));
        const Bytes crafted = join(join(start, Bytes(static_cast<std::size_t>(length), 0xAB)), {1, 1});
        const ul::P<sarn::IDigest> digest = resumeDigest("md5", crafted);
        Bytes expected(16, 0);
        std::fill_n(expected.begin(), std::min(length, 16), static_cast<unsigned char>(0xAB));
        Bytes out(20, 0xEE);
        digest->storeDigestData(out.data());
        EXPECT_EQ(out, join(expected, Bytes(4, 0xEE)));
        EXPECT_EQ(getData(*digest), expected);
        EXPECT_EQ(storeState(*digest), crafted) << "the loaded state is stored again";
    }
}

TEST(ChecksumState, OfTheOtherChecksum_IsLoaded) {
    EXPECT_EQ(finish(*resumeDigest("adler32", getRunningState("crc32"))), getDigest("crc32", makePattern(100)));
}

TEST(CombinerState, FinishedOverARunningComponent_RaisesOnReadingAndKeepsTheLengthOfTheResult) {
    Bytes state = getRunningState("md4-sha1");
    state.at(state.size() - 2) = 1;
    const ul::P<sarn::IDigest> digest = resumeDigest("md4-sha1", state);
    EXPECT_THROW(digest->getDigestData(), ul::CBadStateError);
    Bytes expected = withWord(state, state.size() - 6, 36);
    expected.insert(expected.end() - 2, 36, 0);
    EXPECT_EQ(toHex(storeState(*digest)), toHex(expected));
}

TEST(CombinerState, WithAReadyResult_ReturnsItUnchanged) {
    const ul::P<sarn::IDigest> source = createDigest("md4-sha1");
    source->finish();
    Bytes changed = getData(*source);
    changed.back() ^= 0xFF;
    const Bytes stored = storeState(*source);
    const Bytes state = join(join(cut(stored, -38), changed), {1, 1});
    const ul::P<sarn::IDigest> digest = resumeDigest("md4-sha1", state);
    EXPECT_EQ(getData(*digest), changed);
    EXPECT_EQ(getResult(*digest), getResult(*source)) << "storing asks the components";
    EXPECT_EQ(storeState(*digest), state);
    digest->reset();
    feed(*digest, makePattern(10));
    digest->finish();
    EXPECT_EQ(getData(*digest), getDigest("md4-sha1", makePattern(10))) << "the ready result was kept";
}

} // namespace sarn_test
