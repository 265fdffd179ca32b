// SPDX-License-Identifier: Apache-2.0
// The state of a digest after a call of libcrypto has failed. MD5 represents all hashes: they are one template.
#include "failures/call_watch.h"
#include "failures/injection.h"
#include "support/digest_test_data.h"

namespace sarn_test {

namespace {

const Bytes md5OfAbc = fromHex("900150983cd24fb0d6963f7d28e17f72");
const Bytes md5OfNothing = fromHex("d41d8cd98f00b204e9800998ecf8427e");

class DigestFailures : public testing::Test {
protected:
    const ul::P<sarn::IDigestType> m_type = ul::make<sarn::CDigestType_MD5>();
    CallWatch m_watch;
};

using DigestFailuresDeathTest = DigestFailures;

} // namespace

TEST_F(DigestFailures, OfUpdateFinishAndReset_LeaveTheDigestRunning) {
    const ul::P<sarn::IDigest> digest = m_type->createDigest();
    m_watch.fail("MD5_Update");
    EXPECT_THROW(digest->update("abc", 3), ul::CError);
    digest->update("abc", 3);
    for (const auto operation : {&sarn::IDigest::finish, &sarn::IDigest::reset}) {
        m_watch.fail("MD5_Final");
        EXPECT_THROW((digest.get()->*operation)(), ul::CError);
        EXPECT_THROW(digest->getDigestData(), ul::CBadStateError);
    }
    EXPECT_EQ(finish(*digest), md5OfAbc);
}

TEST_F(DigestFailures, OfTheInitOfReset_LeaveTheDigestFinished) {
    const ul::P<sarn::IDigest> digest = m_type->createDigest();
    m_watch.fail("MD5_Init");
    EXPECT_THROW(digest->reset(), ul::CError);
    EXPECT_EQ(getResult(*digest), md5OfNothing);
    digest->reset();
    digest->update("abc", 3);
    EXPECT_EQ(finish(*digest), md5OfAbc);
}

TEST_F(DigestFailuresDeathTest, OfTheEndOfARunningDigest_EndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            ul::P<sarn::IDigest> digest = m_type->createDigest();
            m_watch.fail("MD5_Final");
            digest = nullptr;
        },
        "");
}

TEST_F(DigestFailures, OfAllocations_LeaveADigestThatLoadsAStateUnchanged) {
    for (const char* const id : digestIDs) {
        const ul::P<sarn::IDigest> source = createDigest(id, makePattern(100));
        source->finish();
        const Bytes state = storeState(*source);
        const ul::P<sarn::IDigest> digest = createDigest(id, makePattern(70));
        const Bytes before = storeState(*digest);
        const int failures = failEachAllocation([&] {
            EXPECT_EQ(toHex(storeState(*digest)), toHex(before)) << id;
            loadState(*digest, state);
        });
        EXPECT_EQ(toHex(storeState(*digest)), toHex(state)) << id << ", after " << failures << " failures";
    }
}

TEST_F(DigestFailures, OfAllocations_CannotHappenInUpdateAndFinish) {
    const Bytes input = makePattern(10000);
    for (const char* const id : digestIDs) {
        const ul::P<sarn::IDigest> digest = createDigest(id);
        const AllocationFailure failure(0);
        digest->update(input.data(), 10000);
        digest->finish();
        EXPECT_FALSE(failure.hasHappened()) << id;
    }
}

} // namespace sarn_test
