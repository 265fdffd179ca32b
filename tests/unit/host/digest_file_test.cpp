// SPDX-License-Identifier: Apache-2.0
#include "support/digest_test_data.h"
#include "support/temp_folder.h"

#include "sarn/host.h"

#include <cstdint>
#include <fstream>
#include <utility>

namespace sarn_test {

namespace {

using Progress = std::pair<std::int64_t, std::int64_t>;

} // namespace

TEST(DigestFile, OfAnySize_IsTheDigestOfItsBytes) {
    const TempFolder folder;
    for (const int size : {0, 1, 65535, 65536, 65537, 200000}) {
        const ul::CWindowsPath path = folder.write("file", makeText(size));
        for (const char* const id : digestIDs)
            EXPECT_EQ(toBytes(sarn::digestFile(id, path)), getDigest(id, makePattern(size))) << id << " of " << size;
    }
}

TEST(DigestFile, OfAFileThatIsNotThere_RaisesTheFileError) {
    const TempFolder folder;
    EXPECT_THROW(sarn::digestFile("sha1", folder.getPath("none")), ul::CFileError);
}

TEST(DigestFile, Progress_GrowsToTheWholeAndIsNotCalledForAnEmptyFile) {
    const TempFolder folder;
    std::vector<Progress> calls;
    const auto note = [&](std::int64_t done, std::int64_t whole) { calls.emplace_back(done, whole); };
    sarn::digestFile("sha1", folder.write("empty", ""), note);
    EXPECT_TRUE(calls.empty());
    sarn::digestFile("sha1", folder.write("file", std::string(150000, 'x')), note);
    EXPECT_EQ(calls, (std::vector<Progress>{{65536, 150000}, {131072, 150000}, {150000, 150000}}));
}

#ifdef __linux__
TEST(DigestFile, Progress_OfAFileWithoutASize_IsNeverMoreThanTheWhole) {
    int calls = 0;
    sarn::digestFile("sha1", ul::path("/proc/self/status"), [&](std::int64_t done, std::int64_t whole) {
        ++calls;
        EXPECT_LE(done, whole);
    });
    EXPECT_GE(calls, 1);
}
#endif

TEST(DigestFile, ExceptionOfTheProgress_EndsTheCall) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("file", std::string(150000, 'x'));
    int calls = 0;
    const auto cancel = [&](std::int64_t, std::int64_t) {
        ++calls;
        throw std::runtime_error("cancelled");
    };
    EXPECT_THROW(sarn::digestFile("sha1", path, cancel), std::runtime_error);
    EXPECT_EQ(calls, 1);
}

TEST(DigestFile, OfAFileThatGrowsMeanwhile_IsTheDigestOfAllOfIt) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("file", "only ");
    bool hasGrown = false;
    const auto result = sarn::digestFile("sha1", path, [&](std::int64_t done, std::int64_t whole) {
        EXPECT_LE(done, whole);
        if (!std::exchange(hasGrown, true))
            std::ofstream(ul::native(path), std::ios::binary | std::ios::app) << "copy";
    });
    EXPECT_EQ(toBytes(result), getDigest("sha1", toBytes("only copy")));
}

TEST(FeedFile, CalledAgain_ReadsTheBytesThatWereAdded) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("file", "only ");
    ul::CWindowsFileInStream file(path);
    const ul::P<sarn::IDigest> digest = sarn::createDigest("sha1");
    const auto ignore = [](std::int64_t, std::int64_t) {};
    sarn::feedFile(*digest, file, ignore);
    std::ofstream(ul::native(path), std::ios::binary | std::ios::app) << "copy";
    sarn::feedFile(*digest, file, ignore);
    EXPECT_EQ(toBytes(sarn::finish(*digest)), getDigest("sha1", toBytes("only copy")));
}

TEST(SaveState, OfEveryDigest_IsTheStateThatTheDocumentedOperationsWriteAndRead) {
    for (const char* const id : digestIDs) {
        const ul::P<sarn::IDigest> first = createDigest(id, makePattern(100));
        EXPECT_EQ(toBytes(sarn::saveState(*first)), storeState(*first)) << id;
        const ul::P<sarn::IDigest> second = sarn::createDigest(id);
        sarn::loadState(*second, sarn::saveState(*first));
        sarn::feed(*first, "more");
        sarn::feed(*second, "more");
        EXPECT_EQ(toBytes(sarn::finish(*second)), toBytes(sarn::finish(*first))) << id;
    }
}

TEST(LoadState, OfBytesThatAreNotOneState_RaisesAnErrorAndResetsTheDigest) {
    for (const char* const id : digestIDs) {
        const Bytes state = getRunningState(id);
        const Bytes longer = join(state, {0});
        const ul::P<sarn::IDigest> digest = sarn::createDigest(id);
        for (const Bytes& bad : {longer, cut(state, -1), Bytes(), withWord(state, 0, 2)}) {
            sarn::feed(*digest, "something");
            EXPECT_THROW(sarn::loadState(*digest, bad), ul::CError);
            sarn::feed(*digest, "abc");
            EXPECT_EQ(toBytes(sarn::finish(*digest)), getDigest(id, toBytes("abc")));
            digest->reset();
        }
        expectError("Bytes follow the digest state.", [&] { sarn::loadState(*digest, longer); });
    }
}

} // namespace sarn_test
