// SPDX-License-Identifier: Apache-2.0
#include "support/digest_test_data.h"
#include "support/temp_folder.h"

#include "sarn/host.h"

#include <cstdint>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace sarn_test {

namespace {

std::string makeText(int size) {
    const Bytes bytes = makePattern(size);
    return std::string(bytes.begin(), bytes.end());
}

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
    std::vector<std::pair<std::int64_t, std::int64_t>> calls;
    const auto note = [&](std::int64_t done, std::int64_t whole) { calls.emplace_back(done, whole); };
    sarn::digestFile("sha1", folder.write("empty", ""), note);
    EXPECT_TRUE(calls.empty());
    sarn::digestFile("sha1", folder.write("file", makeText(150000)), note);
    const std::vector<std::pair<std::int64_t, std::int64_t>> expected = {
        {65536, 150000}, {131072, 150000}, {150000, 150000}};
    EXPECT_EQ(calls, expected);
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

TEST(DigestFile, WhatTheProgressThrows_EndsTheCall) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("file", makeText(150000));
    int calls = 0;
    EXPECT_THROW(sarn::digestFile("sha1", path,
                                  [&](std::int64_t, std::int64_t) {
                                      ++calls;
                                      throw std::runtime_error("cancelled");
                                  }),
                 std::runtime_error);
    EXPECT_EQ(calls, 1);
}

TEST(DigestFile, OfAFileThatGrowsMeanwhile_DigestsWhatIsThereInTheEnd) {
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

TEST(FeedFile, CalledAgain_GoesOnWhereTheFileHasGrown) {
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

TEST(SaveState, OfEveryDigest_IsWhatTheDocumentedOperationsWriteAndRead) {
    for (const char* const id : digestIDs) {
        const ul::P<sarn::IDigest> first = sarn::createDigest(id);
        sarn::feed(*first, makePattern(100));
        EXPECT_EQ(toBytes(sarn::saveState(*first)), storeState(*first)) << id;
        const ul::P<sarn::IDigest> second = sarn::createDigest(id);
        sarn::loadState(*second, sarn::saveState(*first));
        sarn::feed(*first, "more");
        sarn::feed(*second, "more");
        EXPECT_EQ(toBytes(sarn::finish(*second)), toBytes(sarn::finish(*first))) << id;
    }
}

TEST(LoadState, OfWhatIsNotOneState_RaisesAnErrorAndResetsTheDigest) {
    for (const char* const id : digestIDs) {
        const Bytes state = getRunningState(id);
        Bytes longer = state;
        longer.push_back(0);
        const Bytes shorter(state.begin(), state.end() - 1);
        const ul::P<sarn::IDigest> digest = sarn::createDigest(id);
        for (const Bytes& bad : {longer, shorter, Bytes(), withWord(state, 0, 2)}) {
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
