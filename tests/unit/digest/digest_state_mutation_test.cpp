// SPDX-License-Identifier: Apache-2.0
// No stream does harm: every byte of every golden state through all its values, and every state cut everywhere. What is
// asserted is little; the sanitizers do the rest.
#include "support/digest_test_data.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace sarn_test {

namespace {

class DigestStateMutation : public testing::TestWithParam<const char*> {};

// A combination has so many states and bytes that one test of them all would take minutes under sanitizers.
constexpr int partCount = 4;
class DigestStateMutationPart : public testing::TestWithParam<std::tuple<const char*, int>> {};

std::string getPartName(const testing::TestParamInfo<std::tuple<const char*, int>>& info) {
    return getDigestTestName({std::get<0>(info.param), info.index}) + "_" + std::to_string(std::get<1>(info.param));
}

/// Runs `action`, in which the library may refuse what it is asked for.
template <class Action>
bool isDone(Action action) {
    try {
        action();
        return true;
    } catch (const ul::CError&) {
        return false;
    }
}

/// Loads a state and uses the digest in every way.
void exercise(sarn::IDigestType& type, const Bytes& state) {
    static const Bytes input = makePattern(130);
    const ul::P<sarn::IDigest> digest = type.createDigest();
    const auto size = static_cast<std::size_t>(type.getDigestSize());
    Bytes out(size);
    unsigned sum = 0;
    isDone([&] { loadState(*digest, state); });
    isDone([&] { digest->storeDigestData(out.data()); });
    isDone([&] { feed(*digest, input); });
    isDone([&] { digest->finish(); });
    isDone([&] {
        const unsigned char* const data = digest->getDigestData();
        for (std::size_t i = 0; i < size; ++i)
            sum += data[i];
    });
    isDone([&] { digest->storeDigestData(out.data()); });
    isDone([&] { storeState(*digest); });
    EXPECT_LE(sum, 255 * size);
}

} // namespace

TEST_P(DigestStateMutationPart, EveryByteThroughEveryValue_DoesNoHarm) {
    const auto [id, part] = GetParam();
    const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType(id);
    int index = 0;
    for (const Vector& vector : readVectors("digest_states.vec", {"size", "finished", "read", "again", "state"})) {
        if (vector.getSection() != id || index++ % partCount != part)
            continue;
        const Bytes golden = vector.getBytes("state");
        for (std::size_t at = 0; at < golden.size(); ++at) {
            Bytes state = golden;
            for (int value = 0; value < 256; ++value) {
                state[at] = static_cast<unsigned char>(value);
                exercise(*type, state);
            }
        }
    }
}

TEST_P(DigestStateMutation, StateCutAnywhere_IsRefusedAndResetMakesTheDigestGood) {
    for (const Vector& vector : readVectors("digest_states.vec", {"size", "finished", "read", "again", "state"})) {
        if (vector.getSection() != GetParam())
            continue;
        const Bytes golden = vector.getBytes("state");
        const ul::P<sarn::IDigest> digest = createDigest(GetParam());
        for (std::size_t size = 0; size < golden.size(); ++size) {
            const Bytes cut(golden.begin(), golden.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_FALSE(isDone([&] { loadState(*digest, cut); })) << size;
            if (size % 2 == 0) {
                digest->reset();
                digest->update("abc", 3);
                EXPECT_EQ(finish(*digest), getDigest(GetParam(), {'a', 'b', 'c'}));
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, DigestStateMutationPart,
                         testing::Combine(testing::ValuesIn(digestIDs), testing::Range(0, partCount)), getPartName);
INSTANTIATE_TEST_SUITE_P(All, DigestStateMutation, testing::ValuesIn(digestIDs), getDigestTestName);

} // namespace sarn_test
