// SPDX-License-Identifier: Apache-2.0
// The format of saved states, and resuming from them.
#include "support/digest_test_data.h"
#include "support/markdown_table.h"

#include <algorithm>

namespace sarn_test {

namespace {

class DigestState : public testing::TestWithParam<const char*> {};

/// A digest with the history of a vector.
ul::P<sarn::IDigest> replay(const Vector& vector) {
    ul::P<sarn::IDigest> digest = createDigest(vector.getSection(), makePattern(vector.getInt("size")));
    if (vector.getInt("finished"))
        digest->finish();
    if (vector.getInt("read"))
        digest->getDigestData();
    if (vector.getInt("again") >= 0) {
        digest->reset();
        feed(*digest, makePattern(vector.getInt("again")));
    }
    return digest;
}

} // namespace

TEST(DigestStates, GoldenStates_AreWrittenByteForByte) {
    const std::vector<Vector> vectors = readStates();
    EXPECT_EQ(vectors.size(), 96U);
    for (const Vector& vector : vectors)
        EXPECT_EQ(toHex(storeState(*replay(vector))), vector.getText("state")) << vector.describe();
}

TEST(DigestStates, GoldenStates_AreReadAndWrittenAgain_AndResumeOrKeepTheirResult) {
    for (const Vector& vector : readStates()) {
        const ul::P<sarn::IDigest> digest = resumeDigest(vector.getSection(), vector.getBytes("state"));
        EXPECT_EQ(toHex(storeState(*digest)), vector.getText("state")) << vector.describe();
        const bool isRunning = !vector.getInt("finished") || vector.getInt("again") >= 0;
        Bytes whole = makePattern(vector.getInt(vector.getInt("again") >= 0 ? "again" : "size"));
        if (isRunning) {
            feed(*digest, makePattern(500));
            whole = join(whole, makePattern(500));
            digest->finish();
        }
        EXPECT_EQ(getResult(*digest), getDigest(vector.getSection(), whole)) << vector.describe();
        EXPECT_EQ(getData(*digest), getResult(*digest));
    }
}

TEST_P(DigestState, ExampleOfTheDocumentation_IsTheStateOfAbc) {
    std::string digits;
    for (const MarkdownRow& row : readMarkdownTable("digest-state.md", GetParam())) {
        for (const std::string& code : row.code[0])
            digits += code;
    }
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    EXPECT_EQ(toHex(storeState(*createDigest(GetParam(), toBytes("abc")))), digits);
}

TEST_P(DigestState, SavedAtEveryOffset_ResumesToTheDigestOfTheWhole) {
    const Bytes input = makePattern(300);
    const Bytes expected = getDigest(GetParam(), input);
    for (int offset = 0; offset <= 300; ++offset) {
        const Bytes state = storeState(*createDigest(GetParam(), cut(input, offset)));
        const ul::P<sarn::IDigest> second = resumeDigest(GetParam(), state);
        feed(*second, Bytes(input.begin() + offset, input.end()));
        EXPECT_EQ(finish(*second), expected) << offset;
    }
}

TEST_P(DigestState, LoadedOverAFreshARunningOrAFinishedDigest_ReplacesItAndItsResult) {
    for (const bool isFinished : {false, true}) {
        const ul::P<sarn::IDigest> source = createDigest(GetParam(), makePattern(100));
        if (isFinished)
            source->finish();
        const Bytes state = storeState(*source);
        const ul::P<sarn::IDigest> running = createDigest(GetParam(), makePattern(1000));
        const ul::P<sarn::IDigest> read = createDigest(GetParam(), makePattern(1000));
        read->finish();
        read->getDigestData();
        for (const ul::P<sarn::IDigest>& digest : {createDigest(GetParam()), running, read}) {
            loadState(*digest, state);
            EXPECT_EQ(storeState(*digest), state);
            if (isFinished)
                EXPECT_THROW(digest->update("x", 1), ul::CBadStateError);
            else
                digest->finish();
            EXPECT_EQ(getResult(*digest), getDigest(GetParam(), makePattern(100)));
            EXPECT_EQ(getData(*digest), getResult(*digest));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, DigestState, testing::ValuesIn(digestIDs), getDigestTestName);

TEST(OpenSSLDigestState, OfSHA1_HasTheDocumentedSize) {
    EXPECT_EQ(getRunningState("sha1").size(), 4U + 4 + 4 + 4 + 96 + 4 + 0 + 1 + 1);
}

} // namespace sarn_test
