// SPDX-License-Identifier: Apache-2.0
// Rules that every running digest keeps, and those of each kind.
#include "support/digest_test_data.h"

#include <gtest/gtest.h>

#include <climits>
#include <sstream>

namespace sarn_test {

namespace {

const Bytes abc{'a', 'b', 'c'};

class RunningDigest : public testing::TestWithParam<const char*> {
protected:
    const ul::P<sarn::IDigest> digest = createDigest(GetParam());
};

constexpr const char* updateAfterFinish = "IDigest::update cannot be called after finish has been called.";
constexpr const char* readBeforeFinish = "IDigest::finish has not been called yet.";

std::vector<std::string> splitID(const std::string& id) {
    std::istringstream stream(id);
    std::vector<std::string> parts;
    for (std::string part; std::getline(stream, part, '-');)
        parts.push_back(part);
    return parts;
}

/// Counts the calls that reach it.
class CountingDigest : public sarn::CDigest_CRC32 {
public:
    CountingDigest() : sarn::CDigest_CRC32(nullptr) {}
    void update(const void* data, int length) override {
        sizes.push_back(length);
        sarn::CDigest_CRC32::update(data, length);
    }
    std::vector<int> sizes;
};

} // namespace

TEST_P(RunningDigest, UpdateAfterFinish_IsRefusedUntilReset) {
    digest->finish();
    const Bytes input = makePattern(5000);
    for (const int length : {0, 3, 2048, 5000, -1, INT_MIN})
        expectErrorOf<ul::CBadStateError>(updateAfterFinish, [&] { digest->update(input.data(), length); });
    expectErrorOf<ul::CBadStateError>(updateAfterFinish, [&] { digest->update(nullptr, 0); });
    digest->reset();
    feed(*digest, abc);
    EXPECT_EQ(finish(*digest), getDigest(GetParam(), abc));
}

TEST_P(RunningDigest, ResultBeforeFinish_IsRefused) {
    unsigned char out[40];
    const auto expectRefused = [&] {
        expectErrorOf<ul::CBadStateError>(readBeforeFinish, [&] { digest->getDigestData(); });
        expectErrorOf<ul::CBadStateError>(readBeforeFinish, [&] { digest->storeDigestData(out); });
    };
    expectRefused();
    feed(*digest, abc);
    expectRefused();
    digest->finish();
    digest->reset();
    expectRefused();
}

TEST_P(RunningDigest, FinishTwice_GivesTheSameResultAsOnce) {
    feed(*digest, abc);
    const Bytes once = finish(*digest);
    EXPECT_EQ(finish(*digest), once);
    EXPECT_EQ(once, getDigest(GetParam(), abc));
}

TEST_P(RunningDigest, GetDigestData_PointsToWhatStoreDigestDataWrites) {
    feed(*digest, abc);
    digest->finish();
    const unsigned char* const data = digest->getDigestData();
    EXPECT_EQ(Bytes(data, data + digest->getDigestSize()), getResult(*digest));
    EXPECT_EQ(digest->getDigestData(), data);
}

TEST_P(RunningDigest, StoreDigestData_WritesExactlyItsSize) {
    digest->finish();
    const auto size = static_cast<std::size_t>(digest->getDigestSize());
    Bytes out(size + 16, 0xEE);
    digest->storeDigestData(out.data() + 8);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 8), Bytes(8, 0xEE));
    EXPECT_EQ(Bytes(out.end() - 8, out.end()), Bytes(8, 0xEE));
}

TEST_P(RunningDigest, ResetHalfWay_DropsTheInput) {
    feed(*digest, makePattern(1000));
    digest->reset();
    feed(*digest, abc);
    EXPECT_EQ(finish(*digest), getDigest(GetParam(), abc));
}

TEST_P(RunningDigest, NegativeSize_IsRefusedAndChangesNothing) {
    feed(*digest, abc);
    for (const int length : {-1, INT_MIN}) {
        const ul::P<ul::CError> error = catchError<ul::CInvalidArgError>([&] { digest->update(abc.data(), length); });
        ASSERT_TRUE(error);
        EXPECT_STREQ(error->what(), "invalid data size");
    }
    EXPECT_EQ(finish(*digest), getDigest(GetParam(), abc));
}

TEST(RunningDigestOfEachKind, NegativeSize_IsRefusedByTheNameOfTheOperation) {
    const auto expectRefusedBy = [](const char* where, const char* id) {
        expectInvalidArg(where, "invalid data size", [&] { createDigest(id)->update("x", -1); });
    };
    expectRefusedBy("CDigest_Adler32::update", "adler32");
    expectRefusedBy("CDigest_CRC32::update", "crc32");
    expectRefusedBy("TDigest_OpenSSL::update", "md4");
    expectRefusedBy("TDigest_OpenSSL::update", "sha256");
}

TEST_P(RunningDigest, NullDataOfNoLength_IsNothingToHashesAndANewStartToChecksums) {
    feed(*digest, abc);
    digest->update(nullptr, 0);
    feed(*digest, makePattern(10));
    Bytes expected;
    for (const std::string& part : splitID(GetParam())) {
        const bool isChecksum = part == "adler32" || part == "crc32";
        expected = join(expected, getDigest(part, isChecksum ? makePattern(10) : join(abc, makePattern(10))));
    }
    EXPECT_EQ(toHex(finish(*digest)), toHex(expected));
}

INSTANTIATE_TEST_SUITE_P(All, RunningDigest, testing::ValuesIn(digestIDs), getDigestTestName);

TEST(Checksums, OfNothing_AreTheInitialValues) {
    EXPECT_EQ(toHex(getDigest("adler32", {})), "01000000");
    EXPECT_EQ(toHex(getDigest("crc32", {})), "00000000");
}

TEST(Checksums, OfTheNineDigits_AreDeliveredLeastSignificantByteFirst) {
    const Bytes digits = toBytes(std::string("123456789"));
    EXPECT_EQ(toHex(getDigest("adler32", digits)), "de011e09");
    EXPECT_EQ(toHex(getDigest("crc32", digits)), "2639f4cb");
    EXPECT_EQ(toHex(getDigest("adler32", toBytes(std::string("Wikipedia")))), "9803e611");
}

TEST(Checksums, NullDataOfAnyLength_TakesThemBackToTheInitialValue) {
    for (const int length : {0, 1, 100000, -1, INT_MIN}) {
        for (const char* const id : {"adler32", "crc32"}) {
            const ul::P<sarn::IDigest> digest = createDigest(id);
            feed(*digest, makePattern(100));
            digest->update(nullptr, length);
            EXPECT_EQ(finish(*digest), getDigest(id, {})) << id << " " << length;
        }
    }
}

TEST(Combiner, NullDataOfAnyLength_TakesEachChecksumBackToItsInitialValue) {
    using Type = sarn::TDigestTypeCombiner<sarn::CDigestType_Adler32, sarn::CDigestType_CRC32>;
    for (const int length : {0, 100, 2048, 5000, INT_MAX, -1}) {
        const ul::P<sarn::IDigest> digest = ul::make<Type>()->createDigest();
        feed(*digest, makePattern(100));
        digest->update(nullptr, length);
        EXPECT_EQ(toHex(finish(*digest)), "0100000000000000") << length;
    }
}

TEST(Checksums, Copy_RunsOnByItself) {
    const ul::P<sarn::CDigestType_Adler32> type = ul::make<sarn::CDigestType_Adler32>();
    sarn::CDigest_Adler32 original(type.get());
    original.update("ab", 2);
    sarn::CDigest_Adler32 copy(original);
    original.update("x", 1);
    copy.update("c", 1);
    EXPECT_EQ(finish(copy), getDigest("adler32", abc));
    EXPECT_NE(finish(original), getResult(copy));
}

TEST(Combiner, OfNothing_GivesBothDigestsOfNothing) {
    EXPECT_EQ(toHex(getDigest("md4-sha1", {})), "31d6cfe0d16ae931b73c59d7e0c089c0"
                                                "da39a3ee5e6b4b0d3255bfef95601890afd80709");
}

TEST(Combiner, OfThree_GivesMD4SHA1AndLittleEndianAdler32) {
    const Bytes input = makePattern(777);
    EXPECT_EQ(toHex(getDigest("md4-sha1-adler32", input)),
              toHex(getDigest("md4", input)) + toHex(getDigest("sha1", input)) + toHex(getDigest("adler32", input)));
}

TEST(Combiner, Update_SlicesTheInputAndEndsWithTheRemainderEvenIfItIsEmpty) {
    const ul::P<CountingDigest> first = ul::make<CountingDigest>();
    const ul::P<CountingDigest> second = ul::make<CountingDigest>();
    sarn::TDigestCombiner<sarn::IDigest, sarn::IDigest> combiner(nullptr, first, second);
    feed(combiner, makePattern(5000));
    feed(combiner, makePattern(4096));
    feed(combiner, makePattern(2047));
    feed(combiner, {});
    const std::vector<int> expected{2048, 2048, 904, 2048, 2048, 0, 2047, 0};
    EXPECT_EQ(first->sizes, expected);
    EXPECT_EQ(second->sizes, expected);
}

TEST(Combiner, UpdateThatTheFirstRefuses_DoesNotReachTheSecond) {
    const ul::P<sarn::IDigest> first = createDigest("crc32");
    const ul::P<CountingDigest> second = ul::make<CountingDigest>();
    sarn::TDigestCombiner<sarn::IDigest, sarn::IDigest> combiner(nullptr, first, second);
    first->finish();
    expectErrorOf<ul::CBadStateError>(updateAfterFinish, [&] { combiner.update("abc", 3); });
    EXPECT_TRUE(second->sizes.empty());
}

TEST(Combiner, NegativeSize_IsPassedOnWhole) {
    const ul::P<CountingDigest> first = ul::make<CountingDigest>();
    const ul::P<CountingDigest> second = ul::make<CountingDigest>();
    sarn::TDigestCombiner<sarn::IDigest, sarn::IDigest> combiner(nullptr, first, second);
    combiner.update(nullptr, -5);
    EXPECT_EQ(first->sizes, std::vector<int>{-5});
    EXPECT_EQ(second->sizes, std::vector<int>{-5});
}

TEST(Combiner, HostsOwnCombination_JoinsIdentifiersSizesAndResults) {
    using Type = sarn::TDigestTypeCombiner<sarn::CDigestType_CRC32, sarn::CDigestType_SHA256>;
    const ul::P<Type> type = ul::make<Type>();
    EXPECT_TRUE(type->getID() == "crc32-sha256");
    EXPECT_EQ(type->getDigestSize(), 36);
    const ul::P<sarn::IDigest> digest = type->createDigest();
    feed(*digest, abc);
    EXPECT_EQ(toHex(finish(*digest)), toHex(getDigest("crc32", abc)) + toHex(getDigest("sha256", abc)));
}

} // namespace sarn_test
