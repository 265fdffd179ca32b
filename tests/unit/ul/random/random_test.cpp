// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/threads.h"

#include "ul/random.h"

namespace sarn_test {

namespace {

using Block = std::array<unsigned char, 16>;

Block draw(ul::CMutex* mutex) {
    Block block{};
    const ul::CMutexLock lock(mutex);
    ul::CMTRand::getGlobal()->randData(block.data(), 16);
    return block;
}

} // namespace

TEST(CMTRand, Global_IsTheSameInstanceAndMutexEveryTime) {
    EXPECT_TRUE(ul::CMTRand::getGlobal());
    EXPECT_EQ(&ul::CMTRand::getGlobal(), &ul::CMTRand::getGlobal());
    EXPECT_EQ(ul::CMTRand::getGlobalInstanceMutex().get(), ul::CMTRand::getGlobalInstanceMutex().get());
}

TEST(CMTRand, RandData_FillsExactlyTheGivenBytes) {
    Bytes bytes(64);
    ul::CMTRand::getGlobal()->randData(bytes.data() + 16, 32);
    EXPECT_EQ(cut(bytes, 16), Bytes(16));
    EXPECT_EQ(Bytes(bytes.end() - 16, bytes.end()), Bytes(16));
    EXPECT_NE(Bytes(bytes.begin() + 16, bytes.end() - 16), Bytes(32));
}

TEST(CMTRand, RandData_OfOneByteOrNone_FillsThatMany_AndOfANegativeSizeIsRefused) {
    Bytes bytes(64);
    for (unsigned char& byte : bytes)
        ul::CMTRand::getGlobal()->randData(&byte, 1);
    EXPECT_NE(bytes, Bytes(64));
    ul::CMTRand::getGlobal()->randData(nullptr, 0);
    expectInvalidArg("CMTRand::randData", "invalid size", [] { ul::CMTRand::getGlobal()->randData(nullptr, -1); });
}

TEST(CMTRand, LargeRequests_AreFilledToTheEnd) {
    Bytes bytes(1 << 20);
    ul::CMTRand::getGlobal()->randData(bytes.data(), 1 << 20);
    const auto zeros = std::count(bytes.end() - 65536, bytes.end(), 0);
    EXPECT_LT(zeros, 512) << "256 are to be expected";
}

TEST(CMTRand, BlocksOfManyThreadsWithAndWithoutTheMutex_AreAllDifferentAndUseEveryByte) {
    for (ul::CMutex* const mutex : {ul::CMTRand::getGlobalInstanceMutex().get(), static_cast<ul::CMutex*>(nullptr)}) {
        std::vector<std::vector<Block>> drawn(8);
        runOnThreads(8, [&](int number) {
            for (int i = 0; i < 1000; ++i)
                drawn[static_cast<std::size_t>(number)].push_back(draw(mutex));
        });
        std::set<Block> blocks;
        std::set<unsigned char> bytes;
        for (const std::vector<Block>& ofAThread : drawn) {
            for (const Block& block : ofAThread) {
                blocks.insert(block);
                bytes.insert(block.begin(), block.end());
            }
        }
        EXPECT_EQ(blocks.size(), 8000U);
        EXPECT_EQ(bytes.size(), 256U);
    }
}

} // namespace sarn_test
