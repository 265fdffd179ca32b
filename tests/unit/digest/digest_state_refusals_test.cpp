// SPDX-License-Identifier: Apache-2.0
// States that are refused, in the order of the checks, and odd ones that are taken.
#include "support/digest_test_data.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace sarn_test {

namespace {

void expectRefused(const char* id, const Bytes& state, const char* message) {
    SCOPED_TRACE(message);
    const ul::P<sarn::IDigest> digest = createDigest(id);
    expectError(message, [&] { loadState(*digest, state); });
    digest->reset();
    digest->update("abc", 3);
    EXPECT_EQ(finish(*digest), getDigest(id, {'a', 'b', 'c'})) << "reset makes it good again";
}

// Offsets in the state of a hash.
constexpr std::size_t versionAt = 0;
constexpr std::size_t opensslVersionAt = 4;
constexpr std::size_t digestSizeAt = 8;
constexpr std::size_t contextSizeAt = 12;
constexpr std::size_t contextAt = 16;

} // namespace

TEST(OpenSSLDigestState, Refusals_ComeInTheirOrder) {
    Bytes state = getRunningState("sha1");
    state = withWord(state, contextSizeAt, 92);
    expectRefused("sha1", state, "Bad OpenSSL digest context size in state stream.");
    state = withWord(state, digestSizeAt, 16);
    expectRefused("sha1", state, "Bad OpenSSL digest size in state stream.");
    state = withWord(state, opensslVersionAt, 0x10100000);
    const ul::P<sarn::IDigest> digest = createDigest("sha1");
    EXPECT_THROW(loadState(*digest, state), sarn::COpenSSLVersionMismatchError);
    state = withWord(state, versionAt, 2);
    expectRefused("sha1", state, "Unsupported OpenSSL digest state data version.");
}

TEST(OpenSSLDigestState, OfAnotherOpenSSL_RaisesAnErrorWithBothVersions) {
    const Bytes state = withWord(getRunningState("md5"), opensslVersionAt, 0x10100000);
    const ul::P<sarn::IDigest> digest = createDigest("md5");
    const ul::P<ul::CError> error = catchError<sarn::COpenSSLVersionMismatchError>([&] { loadState(*digest, state); });
    ASSERT_TRUE(error);
    EXPECT_STREQ(error->what(), "OpenSSL version mismatch");
    EXPECT_TRUE(error->getText().isEmpty());
    EXPECT_EQ(error->getCode(), -1);
    EXPECT_EQ(error->getCause(), nullptr);
    const ul::CProps& props = error->getProps();
    ASSERT_EQ(props.getCount(), 3);
    EXPECT_TRUE(props.getName(0) == "object" && props.getValue(0) == "digest state data");
    EXPECT_TRUE(props.getName(1) == "actualVersion" && props.getValue(1) == "0x10100000");
    EXPECT_TRUE(props.getName(2) == "expectedVersion" && props.getValue(2) == "0x1010102F");
}

TEST(OpenSSLDigestState, VersionMismatchHeldByPointer_IsThrownWithItsOwnType) {
    const ul::P<ul::CError> held = sarn::COpenSSLVersionMismatchError("x", -1, 2).clone();
    EXPECT_THROW(held->throwClone(), sarn::COpenSSLVersionMismatchError);
    ul::String version;
    EXPECT_TRUE(held->getProps().tryGet("actualVersion", version) && version == "0xFFFFFFFF");
}

TEST(OpenSSLDigestState, OfMD5_IsRefusedBySHA1AndTakenByMD4) {
    expectRefused("sha1", getRunningState("md5"), "Bad OpenSSL digest size in state stream.");
    const ul::P<sarn::IDigest> md5 = createDigest("md5");
    EXPECT_EQ(loadState(*md5, getRunningState("md4")), 0);
    md5->finish();
    EXPECT_EQ(getResult(*md5).size(), 16U);
}

TEST(OpenSSLDigestState, FillOutsideTheBlock_IsRefused) {
    const std::pair<const char*, std::size_t> fills[] = {
        {"md4", contextAt + 88}, {"md5", contextAt + 88}, {"sha1", contextAt + 92}, {"sha256", contextAt + 104}};
    for (const auto& [id, at] : fills) {
        const Bytes state = getRunningState(id);
        EXPECT_EQ(state.at(at), 100 % 64) << id;
        for (const unsigned fill : {64U, 65U, 255U, 0x80000000U, 0xFFFFFFFFU})
            expectRefused(id, withWord(state, at, fill), "Bad OpenSSL digest context in state stream.");
    }
}

TEST(OpenSSLDigestState, BadFlagsAndABadFillTogether_AreRefusedForTheFlags) {
    Bytes state = withWord(getRunningState("md5"), contextAt + 88, 64);
    for (const std::size_t fromEnd : {1U, 2U}) {
        Bytes damaged = state;
        damaged.at(state.size() - fromEnd) = 2;
        const ul::P<sarn::IDigest> digest = createDigest("md5");
        expectErrorOf<ul::CError>("Invalid boolean in data stream.", [&] { loadState(*digest, damaged); });
    }
    state.pop_back();
    const ul::P<sarn::IDigest> digest = createDigest("md5");
    expectErrorOf<ul::CError>("Unexpected end of stream.", [&] { loadState(*digest, state); });
}

TEST(OpenSSLDigestState, ThatIsNotInitialized_IsStoredSoAgainAndResetMakesItUsable) {
    Bytes state = getRunningState("md5");
    state.at(state.size() - 2) = 0;
    const ul::P<sarn::IDigest> digest = createDigest("md5");
    EXPECT_EQ(loadState(*digest, state), 0);
    EXPECT_EQ(toHex(storeState(*digest)), toHex(state));
    digest->reset();
    EXPECT_EQ(toHex(storeState(*digest)), toHex(storeState(*createDigest("md5"))));
}

TEST(OpenSSLDigestState, OfAnotherResultSizeInItsContext_IsRefused) {
    for (const unsigned size : {0U, 28U, 33U, 0xFFFFFFFFU})
        expectRefused("sha256", withWord(getRunningState("sha256"), contextAt + 108, size),
                      "Bad OpenSSL digest context in state stream.");
}

TEST(OpenSSLDigestState, NegativeResultLength_IsRefused) {
    for (const unsigned length : {0xFFFFFFFFU, 0x80000000U})
        expectRefused("md5", withWord(getRunningState("md5"), contextAt + 92, length),
                      "Bad digest result length in state stream.");
}

TEST(OpenSSLDigestState, ResultLengthBeyondTheStream_IsRefusedWithoutTakingThatMuchMemory) {
    const Bytes state = withWord(getRunningState("md5"), contextAt + 92, 0x7FFFFFFF);
    const ul::P<sarn::IDigest> digest = createDigest("md5");
    const ul::P<ul::CError> error = catchError<ul::CError>([&] { loadState(*digest, state); });
    ASSERT_TRUE(error);
    EXPECT_STREQ(error->what(), "Unexpected end of stream.");
}

TEST(OpenSSLDigestState, ResultOfAnotherLength_IsDeliveredInTheDigestsSize) {
    const ul::P<sarn::IDigest> source = createDigest("md5");
    source->finish();
    const Bytes state = storeState(*source);
    const std::ptrdiff_t lengthAt = contextAt + 92;
    for (const int length : {0, 5, 15, 17, 10000}) {
        Bytes crafted(state.begin(), state.begin() + lengthAt + 4);
        crafted = withWord(crafted, static_cast<std::size_t>(lengthAt), static_cast<unsigned>(length));
        crafted.insert(crafted.end(), static_cast<std::size_t>(length), 0xAB);
        crafted.insert(crafted.end(), {1, 1});
        const ul::P<sarn::IDigest> digest = createDigest("md5");
        EXPECT_EQ(loadState(*digest, crafted), 0);
        Bytes expected(16, 0);
        std::fill_n(expected.begin(), std::min(length, 16), static_cast<unsigned char>(0xAB));
        Bytes out(20, 0xEE);
        digest->storeDigestData(out.data());
        EXPECT_EQ(Bytes(out.begin(), out.begin() + 16), expected);
        EXPECT_EQ(Bytes(out.begin() + 16, out.end()), Bytes(4, 0xEE));
        EXPECT_EQ(Bytes(digest->getDigestData(), digest->getDigestData() + 16), expected);
        EXPECT_EQ(storeState(*digest), crafted) << "what was loaded is stored again";
    }
}

TEST(ChecksumState, OfAnotherVersion_IsRefusedAndChangesNothing) {
    const std::pair<const char*, const char*> kinds[] = {{"adler32", "Unsupported Adler32 digest state data version."},
                                                         {"crc32", "Unsupported CRC32 digest state data version."}};
    for (const auto& [id, message] : kinds) {
        const ul::P<sarn::IDigest> digest = createDigest(id);
        feed(*digest, makePattern(10));
        expectError(message, [&, id = id] { loadState(*digest, withWord(getRunningState(id), 0, 2)); });
        EXPECT_EQ(finish(*digest), getDigest(id, makePattern(10)));
    }
}

TEST(ChecksumState, OfTheOtherChecksum_IsTaken) {
    const ul::P<sarn::IDigest> digest = createDigest("adler32");
    EXPECT_EQ(loadState(*digest, getRunningState("crc32")), 0);
    EXPECT_EQ(finish(*digest), getDigest("crc32", makePattern(100)));
}

TEST(CombinerState, OfAnotherVersion_IsRefused) {
    for (const char* const id : {"md4-sha1", "md4-sha1-adler32"})
        expectRefused(id, withWord(getRunningState(id), 0, 2), "Unsupported version of TDigestCombined state data.");
}

TEST(CombinerState, WithAForeignComponent_PassesItsErrorOn) {
    const Bytes state = withWord(getRunningState("md4-sha1"), 4 + opensslVersionAt, 0x10100000);
    const ul::P<sarn::IDigest> digest = createDigest("md4-sha1");
    EXPECT_THROW(loadState(*digest, state), sarn::COpenSSLVersionMismatchError);
    digest->reset();
    EXPECT_EQ(finish(*digest), getDigest("md4-sha1", {}));
}

TEST(CombinerState, FinishedOverARunningComponent_RaisesOnReadingAndKeepsTheLengthOfTheResult) {
    const ul::P<sarn::IDigest> source = createDigest("md4-sha1");
    feed(*source, makePattern(100));
    Bytes state = storeState(*source);
    state.at(state.size() - 2) = 1;
    const ul::P<sarn::IDigest> digest = createDigest("md4-sha1");
    loadState(*digest, state);
    EXPECT_THROW(digest->getDigestData(), ul::CBadStateError);
    Bytes expected = withWord(state, state.size() - 6, 36);
    expected.insert(expected.end() - 2, 36, 0);
    EXPECT_EQ(toHex(storeState(*digest)), toHex(expected));
}

TEST(CombinerState, WithAReadyResult_DeliversThatAsItIs) {
    const ul::P<sarn::IDigest> source = createDigest("md4-sha1");
    source->finish();
    source->getDigestData();
    Bytes state = storeState(*source);
    state.back() = 1;
    state.at(state.size() - 3) ^= 0xFF; // the last byte of the joined result
    const ul::P<sarn::IDigest> digest = createDigest("md4-sha1");
    loadState(*digest, state);
    const unsigned char* const data = digest->getDigestData();
    EXPECT_EQ(data[35], static_cast<unsigned char>(getResult(*source).back() ^ 0xFF));
    EXPECT_EQ(getResult(*digest), getResult(*source)) << "storing asks the components";
    EXPECT_EQ(storeState(*digest), state);
    digest->reset();
    feed(*digest, makePattern(10));
    digest->finish();
    const Bytes whole = getDigest("md4-sha1", makePattern(10));
    EXPECT_EQ(Bytes(digest->getDigestData(), digest->getDigestData() + 36), whole) << "the ready result was kept";
}

} // namespace sarn_test
