// SPDX-License-Identifier: Apache-2.0
// The order in which a combination calls its two digests: what the first refuses must not reach the second.
#include "support/digest_test_data.h"

#include <gtest/gtest.h>

namespace sarn_test {

namespace {

/// Writes down what it is asked to do.
class RecordingDigest : public sarn::CDigest_CRC32 {
public:
    RecordingDigest(std::string name, std::vector<std::string>& calls)
        : sarn::CDigest_CRC32(nullptr), m_name(std::move(name)), m_calls(calls) {}
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
        record("store");
        sarn::CDigest_CRC32::storeDigestData(out);
    }

private:
    void record(const std::string& call) const { m_calls.push_back(m_name + " " + call); }

    std::string m_name;
    std::vector<std::string>& m_calls;
};

using Names = std::vector<std::string>;

} // namespace

TEST(Combiner, EveryCall_ReachesTheFirstDigestAheadOfTheSecond) {
    Names calls;
    sarn::TDigestCombiner<sarn::IDigest, sarn::IDigest> combiner(nullptr, ul::make<RecordingDigest>("1", calls),
                                                                 ul::make<RecordingDigest>("2", calls));
    feed(combiner, makePattern(4000));
    EXPECT_EQ(calls, (Names{"1 update 2048", "2 update 2048", "1 update 1952", "2 update 1952"}));
    calls.clear();
    combiner.finish();
    EXPECT_EQ(calls, (Names{"1 finish", "2 finish"}));
    calls.clear();
    getResult(combiner);
    EXPECT_EQ(calls, (Names{"1 store", "2 store"}));
    calls.clear();
    combiner.getDigestData();
    EXPECT_EQ(calls, (Names{"1 store", "2 store"}));
    calls.clear();
    combiner.reset();
    EXPECT_EQ(calls, (Names{"1 reset", "2 reset"}));
}

} // namespace sarn_test
