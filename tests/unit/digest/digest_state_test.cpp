// SPDX-License-Identifier: Apache-2.0
// Saved states: the format, and resuming.
#include "support/digest_test_data.h"
#include "support/markdown_table.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace sarn_test {

namespace {

class DigestState : public testing::TestWithParam<const char*> {};

std::vector<Vector> readStates() {
    return readVectors("digest_states.vec", {"size", "finished", "read", "again", "state"});
}

/// A digest that has been through what a vector says.
ul::P<sarn::IDigest> replay(const Vector& vector) {
    ul::P<sarn::IDigest> digest = createDigest(vector.getSection());
    feed(*digest, makePattern(vector.getInt("size")));
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

TEST(DigestStates, GoldenStates_AreReadAndWrittenAgainByteForByte) {
    for (const Vector& vector : readStates()) {
        const ul::P<sarn::IDigest> digest = createDigest(vector.getSection());
        EXPECT_EQ(loadState(*digest, vector.getBytes("state")), 0) << vector.describe();
        EXPECT_EQ(toHex(storeState(*digest)), vector.getText("state")) << vector.describe();
    }
}

TEST(DigestStates, GoldenStates_ResumeOrKeepTheirResult) {
    for (const Vector& vector : readStates()) {
        const ul::P<sarn::IDigest> digest = createDigest(vector.getSection());
        loadState(*digest, vector.getBytes("state"));
        const bool isRunning = !vector.getInt("finished") || vector.getInt("again") >= 0;
        const int size = vector.getInt("again") >= 0 ? vector.getInt("again") : vector.getInt("size");
        Bytes whole = makePattern(size);
        if (isRunning) {
            const Bytes rest = makePattern(500);
            feed(*digest, rest);
            whole.insert(whole.end(), rest.begin(), rest.end());
            digest->finish();
        }
        EXPECT_EQ(getResult(*digest), getDigest(vector.getSection(), whole)) << vector.describe();
        const unsigned char* const data = digest->getDigestData();
        EXPECT_EQ(Bytes(data, data + digest->getDigestSize()), getResult(*digest));
    }
}

TEST_P(DigestState, ExampleOfTheDocumentation_IsTheStateOfAbc) {
    std::string digits;
    for (const MarkdownRow& row : readMarkdownTable("digest-state.md", GetParam())) {
        for (const std::string& code : row.code[0])
            digits += code;
    }
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    const ul::P<sarn::IDigest> digest = createDigest(GetParam());
    digest->update("abc", 3);
    EXPECT_EQ(toHex(storeState(*digest)), digits);
}

TEST_P(DigestState, SavedAtEveryOffset_ResumesToTheDigestOfTheWhole) {
    const Bytes input = makePattern(300);
    const Bytes expected = getDigest(GetParam(), input);
    for (std::size_t offset = 0; offset <= input.size(); ++offset) {
        const ul::P<sarn::IDigest> first = createDigest(GetParam());
        feed(*first, Bytes(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(offset)));
        const ul::P<sarn::IDigest> second = createDigest(GetParam());
        loadState(*second, storeState(*first));
        feed(*second, Bytes(input.begin() + static_cast<std::ptrdiff_t>(offset), input.end()));
        EXPECT_EQ(finish(*second), expected) << offset;
    }
}

TEST_P(DigestState, OfAFinishedDigest_LoadsAsFinishedWithItsResult) {
    const ul::P<sarn::IDigest> first = createDigest(GetParam());
    feed(*first, makePattern(100));
    first->finish();
    const ul::P<sarn::IDigest> second = createDigest(GetParam());
    loadState(*second, storeState(*first));
    EXPECT_EQ(getResult(*second), getResult(*first));
    EXPECT_THROW(second->update("x", 1), ul::CBadStateError);
}

TEST_P(DigestState, LoadedOverARunningDigest_ReplacesIt) {
    const ul::P<sarn::IDigest> digest = createDigest(GetParam());
    feed(*digest, makePattern(1000));
    loadState(*digest, getRunningState(GetParam()));
    EXPECT_EQ(finish(*digest), getDigest(GetParam(), makePattern(100)));
}

TEST_P(DigestState, LoadedOverAFinishedDigest_ReplacesItsResult) {
    const ul::P<sarn::IDigest> source = createDigest(GetParam());
    feed(*source, makePattern(100));
    source->finish();
    const ul::P<sarn::IDigest> digest = createDigest(GetParam());
    feed(*digest, makePattern(1000));
    digest->finish();
    digest->getDigestData();
    loadState(*digest, storeState(*source));
    EXPECT_EQ(storeState(*digest), storeState(*source));
    EXPECT_EQ(getResult(*digest), getResult(*source));
    EXPECT_EQ(Bytes(digest->getDigestData(), digest->getDigestData() + digest->getDigestSize()), getResult(*source));
}

INSTANTIATE_TEST_SUITE_P(All, DigestState, testing::ValuesIn(digestIDs), getDigestTestName);

TEST(OpenSSLDigestState, OfSHA1_HasTheDocumentedSize) {
    EXPECT_EQ(getRunningState("sha1").size(), 4U + 4 + 4 + 4 + 96 + 4 + 0 + 1 + 1);
    EXPECT_EQ(getRunningState("md4").size(), 114U);
    EXPECT_EQ(getRunningState("md5").size(), 114U);
    EXPECT_EQ(getRunningState("sha256").size(), 134U);
}

} // namespace sarn_test
