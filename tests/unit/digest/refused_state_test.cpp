// SPDX-License-Identifier: Apache-2.0
// A state that is refused leaves the digest as it was: the job goes on where it stood.
#include "support/digest_test_data.h"

#include <gtest/gtest.h>

#include <functional>

namespace sarn_test {

namespace {

class RefusedState : public testing::TestWithParam<const char*> {};

/// A digest that has been fed, and then finished, read and reset as far as it is said.
ul::P<sarn::IDigest> makeDigest(const char* id, int size, bool isFinished, bool isRead, bool isReset) {
    ul::P<sarn::IDigest> digest = createDigest(id);
    feed(*digest, makePattern(size));
    if (isFinished)
        digest->finish();
    if (isRead)
        digest->getDigestData();
    if (isReset)
        digest->reset();
    return digest;
}

/// Digests in every situation that a refusal can meet.
std::vector<ul::P<sarn::IDigest>> makeDigests(const char* id, int size) {
    return {makeDigest(id, size, false, false, false), makeDigest(id, size, true, false, false),
            makeDigest(id, size, true, true, false), makeDigest(id, size, true, true, true)};
}

/// Whether `state` is refused.
bool isRefused(sarn::IDigest& digest, const Bytes& state) {
    try {
        loadState(digest, state);
        return false;
    } catch (const ul::CError&) {
        return true;
    }
}

/// Calls `visit` with `state` cut after each of its bytes, and with each byte damaged in several ways.
void visitDamaged(const Bytes& state, const std::function<void(const Bytes&)>& visit) {
    for (std::size_t size = 0; size < state.size(); ++size)
        visit(Bytes(state.begin(), state.begin() + static_cast<std::ptrdiff_t>(size)));
    for (std::size_t at = 0; at < state.size(); ++at) {
        for (const int flip : {0x01, 0x02, 0x40, 0x80, 0xFF}) {
            Bytes damaged = state;
            damaged[at] = static_cast<unsigned char>(damaged[at] ^ flip);
            visit(damaged);
        }
    }
}

} // namespace

TEST_P(RefusedState, DamagedAnywhere_LeavesEveryDigestAsItWas) {
    for (const ul::P<sarn::IDigest>& source : makeDigests(GetParam(), 100)) {
        const Bytes state = storeState(*source);
        for (const ul::P<sarn::IDigest>& digest : makeDigests(GetParam(), 70)) {
            const Bytes before = storeState(*digest);
            int refusals = 0;
            visitDamaged(state, [&](const Bytes& damaged) {
                if (isRefused(*digest, damaged)) {
                    ++refusals;
                    ASSERT_EQ(toHex(storeState(*digest)), toHex(before));
                } else {
                    loadState(*digest, before);
                }
            });
            EXPECT_GE(refusals, static_cast<int>(state.size()));
        }
    }
}

TEST_P(RefusedState, WhileRunning_DoesNotDisturbTheDigestThatGoesOn) {
    visitDamaged(storeState(*makeDigest(GetParam(), 100, true, true, false)), [&](const Bytes& damaged) {
        const ul::P<sarn::IDigest> digest = makeDigest(GetParam(), 70, false, false, false);
        if (!isRefused(*digest, damaged))
            return;
        feed(*digest, makePattern(500));
        ASSERT_EQ(finish(*digest), getDigest(GetParam(), join(makePattern(70), makePattern(500))));
    });
}

TEST_P(RefusedState, AfterFinish_LeavesTheResultReadableInBothWays) {
    const Bytes expected = getDigest(GetParam(), makePattern(70));
    visitDamaged(storeState(*makeDigest(GetParam(), 100, true, true, false)), [&](const Bytes& damaged) {
        const ul::P<sarn::IDigest> digest = makeDigest(GetParam(), 70, true, false, false);
        if (!isRefused(*digest, damaged))
            return;
        ASSERT_EQ(getResult(*digest), expected);
        const unsigned char* const data = digest->getDigestData();
        ASSERT_EQ(Bytes(data, data + digest->getDigestSize()), expected);
    });
}

TEST_P(RefusedState, CutAndThenWhole_LoadsAsIfItHadNeverBeenCut) {
    const Bytes state = getRunningState(GetParam());
    const ul::P<sarn::IDigest> digest = makeDigest(GetParam(), 70, false, false, false);
    EXPECT_TRUE(isRefused(*digest, Bytes(state.begin(), state.end() - 1)));
    loadState(*digest, state);
    EXPECT_EQ(finish(*digest), getDigest(GetParam(), makePattern(100)));
}

INSTANTIATE_TEST_SUITE_P(All, RefusedState, testing::ValuesIn(digestIDs), getDigestTestName);

} // namespace sarn_test
