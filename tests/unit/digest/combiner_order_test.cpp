// SPDX-License-Identifier: Apache-2.0
// The order in which a combination calls its two digests: what the first refuses must not reach the second.
#include "support/digest_test_data.h"

#include <gtest/gtest.h>

#include <utility>

namespace sarn_test {

namespace {

using Names = std::vector<std::string>;

/// Writes down what it is asked to do, and refuses what it is told to.
class RecordingDigest : public sarn::CDigest_CRC32 {
public:
    RecordingDigest(std::string name, Names& calls)
        : sarn::CDigest_CRC32(nullptr), m_name(std::move(name)), m_calls(calls) {}
    int getDigestSize() const override {
        record("size");
        return sarn::CDigest_CRC32::getDigestSize();
    }
    void update(const void* data, int length) override {
        record("update " + std::to_string(length));
        sarn::CDigest_CRC32::update(data, length);
    }
    void finish() override {
        record("finish");
        sarn::CDigest_CRC32::finish();
    }
    void reset() override {
        record("reset");
        sarn::CDigest_CRC32::reset();
    }
    void storeDigestData(unsigned char* out) const override {
        record("result");
        sarn::CDigest_CRC32::storeDigestData(out);
    }
    void storeState(ul::CDataOutStream& stream) const override {
        record("store");
        sarn::CDigest_CRC32::storeState(stream);
    }
    void loadState(ul::CDataInStream& stream) override {
        record("load");
        sarn::CDigest_CRC32::loadState(stream);
    }

    std::string refused;
    /// How often that is done before it is refused.
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

class CombinerOrder : public testing::Test {
protected:
    /// The calls since the last time.
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

    /// Whether the combination is finished and whether its result is ready, as its state says.
    Bytes getFlags() const {
        const Bytes state = storeState(combiner);
        return Bytes(state.end() - 2, state.end());
    }

    Names calls;
    const ul::P<RecordingDigest> first = ul::make<RecordingDigest>("1", calls);
    const ul::P<RecordingDigest> second = ul::make<RecordingDigest>("2", calls);
    sarn::TDigestCombiner<sarn::IDigest, sarn::IDigest> combiner{nullptr, first, second};
};

/// The types, by number and object, that have created a digest.
std::vector<std::pair<int, const void*>> created;

/// A type that writes down when it creates a digest.
template <int Index>
class RecordingType : public sarn::CDigestType_CRC32 {
public:
    ul::P<sarn::IDigest> createDigest() override {
        created.push_back({Index, this});
        return sarn::CDigestType_CRC32::createDigest();
    }
};

} // namespace

TEST_F(CombinerOrder, Sizes_AreAskedOnceInTheConstructor) {
    EXPECT_EQ(takeCalls(), (Names{"1 size", "2 size"}));
    EXPECT_EQ(combiner.getDigestSize(), 8);
    finish(combiner);
    combiner.getDigestData();
    EXPECT_EQ(takeCalls(), (Names{"1 finish", "2 finish", "1 result", "2 result", "1 result", "2 result"}));
}

TEST_F(CombinerOrder, EveryCall_ReachesTheFirstDigestBeforeTheSecond) {
    takeCalls();
    feed(combiner, makePattern(4000));
    EXPECT_EQ(takeCalls(), (Names{"1 update 2048", "2 update 2048", "1 update 1952", "2 update 1952"}));
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

TEST_F(CombinerOrder, WhatTheFirstRefuses_DoesNotReachTheSecond) {
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

TEST_F(CombinerOrder, StateThatTheSecondRefuses_IsTakenBackFromTheFirst) {
    feed(combiner, makePattern(10));
    const Bytes state = storeState(combiner);
    feed(combiner, makePattern(20));
    const Bytes before = storeState(combiner);
    EXPECT_EQ(refuse(*second, "load", [&] { loadState(combiner, state); }),
              (Names{"1 store", "1 load", "2 store", "2 load", "1 load"}));
    EXPECT_EQ(toHex(storeState(combiner)), toHex(before));
    const Bytes cut(state.begin(), state.end() - 1);
    takeCalls();
    expectErrorOf<ul::CError>("Unexpected end of stream.", [&] { loadState(combiner, cut); });
    EXPECT_EQ(takeCalls(), (Names{"1 store", "1 load", "2 store", "2 load", "2 load", "1 load"}));
    EXPECT_EQ(toHex(storeState(combiner)), toHex(before));
}

TEST_F(CombinerOrder, StateThatTheSecondDoesNotTakeBack_IsTakenBackFromTheFirstAllTheSame) {
    feed(combiner, makePattern(10));
    const Bytes state = storeState(combiner);
    feed(combiner, makePattern(20));
    const Bytes before = storeState(*first);
    second->doneBefore = 1;
    const Bytes cut(state.begin(), state.end() - 1);
    EXPECT_EQ(refuse(*second, "load", [&] { loadState(combiner, cut); }),
              (Names{"1 store", "1 load", "2 store", "2 load", "2 load", "1 load"}));
    EXPECT_EQ(toHex(storeState(*first)), toHex(before));
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
