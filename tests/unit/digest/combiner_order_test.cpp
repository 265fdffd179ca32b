// SPDX-License-Identifier: Apache-2.0
// The order in which a combination calls its two digests: a call that the first refuses must not reach the second.
#include "support/digest_test_data.h"

namespace sarn_test {

namespace {

using Names = std::vector<std::string>;

/// Records its calls, and refuses one of them.
class RecordingDigest : public sarn::CDigest_CRC32 {
public:
    RecordingDigest(std::string name, Names& calls)
        : sarn::CDigest_CRC32(nullptr), m_name(std::move(name)), m_calls(calls) {}
    // clang-format off
    int getDigestSize() const override { record("size"); return CDigest_CRC32::getDigestSize(); }
    void update(const void* data, int length) override {
        record("update " + std::to_string(length));
        CDigest_CRC32::update(data, length);
    }
    void finish() override { record("finish"); CDigest_CRC32::finish(); }
    void reset() override { record("reset"); CDigest_CRC32::reset(); }
    void storeDigestData(unsigned char* out) const override { record("result"); CDigest_CRC32::storeDigestData(out); }
    void storeState(ul::CDataOutStream& stream) const override { record("store"); CDigest_CRC32::storeState(stream); }
    void loadState(ul::CDataInStream& stream) override { record("load"); CDigest_CRC32::loadState(stream); }
    // clang-format on

    std::string refused;
    /// The number of such calls before the refused one.
    mutable int doneBefore = 0;

private:
    void record(const std::string& call) const {
        m_calls.push_back(m_name + " " + call);
        if (call == refused && (doneBefore == 0 || doneBefore-- == 0))
            throw ul::CBadStateError("refused");
    }

    std::string m_name;
    Names& m_calls;
};

struct CombinerOrder : testing::Test {
    /// The calls since the last look.
    Names takeCalls() { return std::exchange(calls, {}); }

    /// Runs `action`, in which `digest` refuses `call`, and returns the calls.
    template <class Action>
    Names refuse(RecordingDigest& digest, const char* call, Action action) {
        takeCalls();
        digest.refused = call;
        expectErrorOf<ul::CBadStateError>("refused", action);
        digest.refused.clear();
        return takeCalls();
    }

    /// The flags of the state: whether the combination is finished, and whether its result is ready.
    Bytes getFlags() const {
        const Bytes state = storeState(combiner);
        return Bytes(state.end() - 2, state.end());
    }

    Names calls;
    const ul::P<RecordingDigest> first = ul::make<RecordingDigest>("1", calls);
    const ul::P<RecordingDigest> second = ul::make<RecordingDigest>("2", calls);
    sarn::TDigestCombiner<sarn::IDigest, sarn::IDigest> combiner{nullptr, first, second};
};

/// The number and the address of each type that has created a digest.
std::vector<std::pair<int, const void*>> created;

template <int Index>
class RecordingType : public sarn::CDigestType_CRC32 {
public:
    ul::P<sarn::IDigest> createDigest() override {
        created.push_back({Index, this});
        return sarn::CDigestType_CRC32::createDigest();
    }
};

} // namespace

TEST_F(CombinerOrder, Sizes_AreReadOnceInTheConstructor) {
    EXPECT_EQ(takeCalls(), (Names{"1 size", "2 size"}));
    EXPECT_EQ(combiner.getDigestSize(), 8);
    finish(combiner);
    combiner.getDigestData();
    EXPECT_EQ(takeCalls(), (Names{"1 finish", "2 finish", "1 result", "2 result", "1 result", "2 result"}));
}

TEST_F(CombinerOrder, EveryCall_ReachesTheFirstDigestBeforeTheSecond) {
    takeCalls();
    combiner.update(nullptr, -5);
    EXPECT_EQ(takeCalls(), (Names{"1 update -5", "2 update -5"})) << "each decides for itself";
    combiner.finish();
    EXPECT_EQ(takeCalls(), (Names{"1 finish", "2 finish"}));
    getResult(combiner);
    EXPECT_EQ(takeCalls(), (Names{"1 result", "2 result"}));
    const Bytes state = storeState(combiner);
    EXPECT_EQ(takeCalls(), (Names{"1 store", "2 store"}));
    combiner.reset();
    EXPECT_EQ(takeCalls(), (Names{"1 reset", "2 reset"}));
    loadState(combiner, state);
    EXPECT_EQ(takeCalls(), (Names{"1 store", "1 load", "2 store", "2 load"}));
}

TEST_F(CombinerOrder, Update_SlicesTheInputAndEndsWithTheRemainderEvenIfItIsEmpty) {
    const std::pair<int, std::vector<const char*>> inputs[] = {
        {5000, {"2048", "2048", "904"}}, {4096, {"2048", "2048", "0"}}, {2047, {"2047"}}, {0, {"0"}}};
    for (const auto& [size, slices] : inputs) {
        takeCalls();
        feed(combiner, makePattern(size));
        Names expected;
        for (const std::string slice : slices)
            expected.insert(expected.end(), {"1 update " + slice, "2 update " + slice});
        EXPECT_EQ(takeCalls(), expected);
    }
}

TEST_F(CombinerOrder, CallThatTheFirstRefuses_DoesNotReachTheSecond) {
    const Bytes state = storeState(combiner);
    EXPECT_EQ(refuse(*first, "load", [&] { loadState(combiner, state); }), (Names{"1 store", "1 load"}));
    EXPECT_EQ(refuse(*first, "store", [&] { storeState(combiner); }), Names{"1 store"});
    EXPECT_EQ(refuse(*first, "update 3", [&] { combiner.update("abc", 3); }), Names{"1 update 3"});
    EXPECT_EQ(refuse(*first, "finish", [&] { combiner.finish(); }), Names{"1 finish"});
    EXPECT_EQ(refuse(*first, "reset", [&] { combiner.reset(); }), Names{"1 reset"});
}

TEST_F(CombinerOrder, FinishThatFails_LeavesTheCombinationRunning) {
    for (RecordingDigest* const digest : {first.get(), second.get()}) {
        refuse(*digest, "finish", [&] { combiner.finish(); });
        EXPECT_EQ(getFlags(), (Bytes{0, 0}));
    }
    combiner.finish();
    EXPECT_EQ(getFlags(), (Bytes{1, 0}));
}

TEST_F(CombinerOrder, ResetThatFails_LeavesTheCombinationFinishedAndItsResultReady) {
    combiner.finish();
    combiner.getDigestData();
    Bytes state = storeState(combiner);
    state.back() = 1;
    loadState(combiner, state);
    for (RecordingDigest* const digest : {first.get(), second.get()}) {
        refuse(*digest, "reset", [&] { combiner.reset(); });
        EXPECT_EQ(getFlags(), (Bytes{1, 1}));
    }
    combiner.reset();
    EXPECT_EQ(getFlags(), (Bytes{0, 0}));
}

TEST_F(CombinerOrder, StateThatTheSecondRefuses_IsUndoneInTheFirst) {
    feed(combiner, makePattern(10));
    const Bytes state = storeState(combiner);
    feed(combiner, makePattern(20));
    const Bytes before = storeState(combiner);
    EXPECT_EQ(refuse(*second, "load", [&] { loadState(combiner, state); }),
              (Names{"1 store", "1 load", "2 store", "2 load", "1 load"}));
    EXPECT_EQ(toHex(storeState(combiner)), toHex(before));
    const Names callsForCut{"1 store", "1 load", "2 store", "2 load", "2 load", "1 load"};
    takeCalls();
    expectErrorOf<ul::CError>("Unexpected end of stream.", [&] { loadState(combiner, cut(state, -1)); });
    EXPECT_EQ(takeCalls(), callsForCut);
    EXPECT_EQ(toHex(storeState(combiner)), toHex(before));
    // Even if the second fails to load its own state again.
    const Bytes ofTheFirst = storeState(*first);
    second->doneBefore = 1;
    EXPECT_EQ(refuse(*second, "load", [&] { loadState(combiner, cut(state, -1)); }), callsForCut);
    EXPECT_EQ(toHex(storeState(*first)), toHex(ofTheFirst));
}

TEST_F(CombinerOrder, GetDigestDataThatFails_LeavesAResultOfTheWholeLength) {
    combiner.finish();
    const Bytes before = storeState(combiner);
    refuse(*first, "result", [&] { combiner.getDigestData(); });
    EXPECT_EQ(storeState(combiner).size(), before.size() + 8);
}

TEST(CombinedType, CreateDigest_AsksTheSecondOfItsOwnTypesBeforeTheFirst) {
    using First = RecordingType<1>;
    using Second = RecordingType<2>;
    const ul::P<sarn::TDigestTypeCombiner<First, Second>> type = ul::make<sarn::TDigestTypeCombiner<First, Second>>();
    created.clear();
    type->createDigest();
    ASSERT_EQ(created.size(), 2U);
    EXPECT_EQ(created[0].first, 2);
    EXPECT_EQ(created[1].first, 1);
    const auto* const begin = reinterpret_cast<const char*>(type.get());
    for (const auto& [index, object] : created) {
        const auto* const at = static_cast<const char*>(object);
        EXPECT_TRUE(at >= begin && at < begin + sizeof *type) << "type " << index << " lies in the combined type";
    }
}

} // namespace sarn_test
