// SPDX-License-Identifier: Apache-2.0
// The format of saved states, and resuming from them. No state does harm, and one that is refused leaves the digest
// unchanged, so that its job can go on.
#include "support/digest_test_data.h"
#include "support/markdown_table.h"

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

class DamagedDigestState : public testing::TestWithParam<const char*> {};

std::vector<Vector> readStatesOf(const std::string& id) {
    std::vector<Vector> states = readStates();
    const auto isOfAnother = [&id](const Vector& vector) { return vector.getSection() != id; };
    states.erase(std::remove_if(states.begin(), states.end(), isOfAnother), states.end());
    return states;
}

/// The stages of a digest of 70 bytes in which a state can be refused.
enum class Stage { Running, Finished, Read, Reset };
ul::P<sarn::IDigest> makeDigest(const char* id, Stage stage) {
    ul::P<sarn::IDigest> digest = createDigest(id, makePattern(70));
    if (stage >= Stage::Finished)
        digest->finish();
    if (stage >= Stage::Read)
        digest->getDigestData();
    if (stage >= Stage::Reset)
        digest->reset();
    return digest;
}

/// The result after `rest` was fed, if the stage allows that.
Bytes getExpected(const char* id, Stage stage, const Bytes& rest) {
    const Bytes start = stage == Stage::Reset ? Bytes() : makePattern(70);
    return getDigest(id, stage == Stage::Running || stage == Stage::Reset ? join(start, rest) : start);
}

/// Runs `action`. Returns whether it was not refused.
template <class Action>
bool isDone(Action action) {
    try {
        action();
        return true;
    } catch (const ul::CError&) {
        return false;
    }
}

/// Uses a digest in every way after it has loaded a state.
void exercise(sarn::IDigestType& type, const Bytes& state) {
    static const Bytes input = makePattern(130);
    const ul::P<sarn::IDigest> digest = type.createDigest();
    if (!isDone([&] { loadState(*digest, state); }))
        return;
    isDone([&] { getResult(*digest); });
    isDone([&] { feed(*digest, input); });
    isDone([&] { digest->finish(); });
    isDone([&] { EXPECT_EQ(static_cast<int>(getData(*digest).size()), type.getDigestSize()); });
    isDone([&] { getResult(*digest); });
    isDone([&] { storeState(*digest); });
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
    for (const MarkdownRow& row : readMarkdownTable("digest-state.md", GetParam()))
        for (const std::string& code : row.code[0])
            digits += code;
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    EXPECT_EQ(toHex(storeState(*createDigest(GetParam(), toBytes("abc")))), digits);
}

TEST_P(DigestState, SavedAtEveryOffset_ResumesToTheDigestOfTheWhole) {
    const Bytes input = makePattern(300);
    const Bytes expected = getDigest(GetParam(), input);
    for (int offset = 0; offset <= 300; ++offset) {
        const Bytes state = storeState(*createDigest(GetParam(), cut(input, offset)));
        const ul::P<sarn::IDigest> second = resumeDigest(GetParam(), state);
        EXPECT_EQ(storeState(*second), state) << offset;
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
        for (const Stage stage : {Stage::Running, Stage::Read, Stage::Reset}) {
            const ul::P<sarn::IDigest> digest = makeDigest(GetParam(), stage);
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

// It asserts little, but the sanitizers watch. A running, a finished and a read digest cover all layouts.
TEST_P(DamagedDigestState, EachByteWithOneBitFlippedOrAnEdgeAsItsValue_DoesNoHarm) {
    const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType(GetParam());
    for (const Vector& vector : readStatesOf(GetParam())) {
        if (vector.getInt("size") != 100 || vector.getInt("again") >= 0)
            continue;
        const Bytes original = vector.getBytes("state");
        for (std::size_t at = 0; at < original.size(); ++at) {
            Bytes state = original;
            for (int bit = 0x01; bit <= 0x80; bit *= 2) {
                state[at] = static_cast<unsigned char>(original[at] ^ bit);
                exercise(*type, state);
            }
            // The blocks of the digests have 64 bytes.
            for (const int edge : {0, 1, 63, 64, 65, 127, 128, 255}) {
                state[at] = static_cast<unsigned char>(edge);
                exercise(*type, state);
            }
        }
    }
}

TEST_P(DamagedDigestState, CutOrChangedAnywhere_LeavesEveryDigestThatRefusesItUnchanged) {
    const Bytes rest = makePattern(500);
    for (const Stage stage : {Stage::Running, Stage::Finished, Stage::Read, Stage::Reset}) {
        const ul::P<sarn::IDigest> digest = makeDigest(GetParam(), stage);
        const Bytes before = storeState(*digest);
        for (const Vector& vector : readStatesOf(GetParam())) {
            const Bytes state = vector.getBytes("state");
            for (std::size_t at = 0; at < state.size(); ++at) {
                ASSERT_FALSE(isDone([&] { loadState(*digest, cut(state, static_cast<int>(at))); })) << at;
                ASSERT_EQ(storeState(*digest), before);
                for (const int flip : {0x01, 0x80}) {
                    Bytes damaged = state;
                    damaged[at] = static_cast<unsigned char>(damaged[at] ^ flip);
                    if (isDone([&] { loadState(*digest, damaged); }))
                        loadState(*digest, before);
                    ASSERT_EQ(storeState(*digest), before) << at << " " << flip;
                }
            }
        }
        isDone([&] { feed(*digest, rest); });
        EXPECT_EQ(finish(*digest), getExpected(GetParam(), stage, rest));
        EXPECT_EQ(getData(*digest), getResult(*digest));
    }
}

INSTANTIATE_TEST_SUITE_P(All, DamagedDigestState, testing::ValuesIn(digestIDs), getDigestTestName);

} // namespace sarn_test
