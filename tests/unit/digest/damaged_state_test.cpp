// SPDX-License-Identifier: Apache-2.0
// No state does harm. A state that is refused leaves the digest unchanged, so that its job can go on.
#include "support/digest_test_data.h"

namespace sarn_test {

namespace {

class DamagedDigestState : public testing::TestWithParam<const char*> {};

std::vector<Vector> readStatesOf(const std::string& id) {
    std::vector<Vector> states;
    for (const Vector& vector : readStates()) {
        if (vector.getSection() == id)
            states.push_back(vector);
    }
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

TEST_P(DamagedDigestState, CutAndThenWhole_LoadsAsIfItHadNeverBeenCut) {
    const Bytes state = getRunningState(GetParam());
    const ul::P<sarn::IDigest> digest = createDigest(GetParam(), makePattern(70));
    EXPECT_FALSE(isDone([&] { loadState(*digest, cut(state, -1)); }));
    loadState(*digest, state);
    EXPECT_EQ(finish(*digest), getDigest(GetParam(), makePattern(100)));
}

INSTANTIATE_TEST_SUITE_P(All, DamagedDigestState, testing::ValuesIn(digestIDs), getDigestTestName);

} // namespace sarn_test
