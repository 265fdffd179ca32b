// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"

#include "ul/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <thread>
#include <vector>

namespace {

using Block = std::array<unsigned char, 16>;

Block draw() {
    Block block{};
    const ul::CMutexLock lock(*ul::CMTRand::getGlobalInstanceMutex());
    ul::CMTRand::getGlobal()->randData(block.data(), 16);
    return block;
}

Block drawWithoutTheMutex() {
    Block block{};
    ul::CMTRand::getGlobal()->randData(block.data(), 16);
    return block;
}

void expectDifferentBlocksOnThreads(Block (*drawBlock)()) {
    std::vector<std::vector<Block>> drawn(8);
    std::vector<std::thread> threads;
    for (std::vector<Block>& blocks : drawn)
        threads.emplace_back([&blocks, drawBlock] {
            for (int i = 0; i < 1000; ++i)
                blocks.push_back(drawBlock());
        });
    for (std::thread& thread : threads)
        thread.join();
    std::set<Block> all;
    for (const std::vector<Block>& blocks : drawn)
        all.insert(blocks.begin(), blocks.end());
    EXPECT_EQ(all.size(), 8000U);
}

} // namespace

TEST(CMTRand, Global_IsTheSameInstanceAndMutexEveryTime) {
    EXPECT_TRUE(ul::CMTRand::getGlobal());
    EXPECT_EQ(&ul::CMTRand::getGlobal(), &ul::CMTRand::getGlobal());
    EXPECT_EQ(ul::CMTRand::getGlobalInstanceMutex().get(), ul::CMTRand::getGlobalInstanceMutex().get());
}

TEST(CMTRand, RandData_FillsExactlyTheGivenBytes) {
    std::array<unsigned char, 64> bytes{};
    ul::CMTRand::getGlobal()->randData(bytes.data() + 16, 32);
    EXPECT_TRUE(std::all_of(bytes.begin(), bytes.begin() + 16, [](int byte) { return byte == 0; }));
    EXPECT_TRUE(std::all_of(bytes.end() - 16, bytes.end(), [](int byte) { return byte == 0; }));
    EXPECT_FALSE(std::all_of(bytes.begin() + 16, bytes.end() - 16, [](int byte) { return byte == 0; }));
}

TEST(CMTRand, RandData_OfNoBytes_TouchesNothing) {
    ul::CMTRand::getGlobal()->randData(nullptr, 0);
}

TEST(CMTRand, RandData_OfANegativeSize_IsRefused) {
    sarn_test::expectInvalidArg("CMTRand::randData", "invalid size",
                                [] { ul::CMTRand::getGlobal()->randData(nullptr, -1); });
}

TEST(CMTRand, RandData_OfOneByte_FillsIt) {
    std::array<unsigned char, 64> bytes{};
    for (unsigned char& byte : bytes)
        ul::CMTRand::getGlobal()->randData(&byte, 1);
    EXPECT_FALSE(std::all_of(bytes.begin(), bytes.end(), [](int byte) { return byte == 0; }));
}

TEST(CMTRand, ManyBlocks_AreAllDifferentAndUseEveryByte) {
    std::set<Block> blocks;
    std::set<unsigned char> bytes;
    for (int i = 0; i < 2000; ++i) {
        const Block block = draw();
        blocks.insert(block);
        bytes.insert(block.begin(), block.end());
    }
    EXPECT_EQ(blocks.size(), 2000U);
    EXPECT_EQ(bytes.size(), 256U);
}

TEST(CMTRand, LargeRequests_AreFilledToTheEnd) {
    std::vector<unsigned char> bytes(1 << 20);
    ul::CMTRand::getGlobal()->randData(bytes.data(), 1 << 20);
    const auto zeros = std::count(bytes.end() - 65536, bytes.end(), 0);
    EXPECT_LT(zeros, 512) << "256 are to be expected";
}

TEST(CMTRand, BlocksOfManyThreadsWithoutTheMutex_AreAllDifferent) {
    expectDifferentBlocksOnThreads(drawWithoutTheMutex);
}

TEST(CMTRand, BlocksOfManyThreads_AreAllDifferent) {
    expectDifferentBlocksOnThreads(draw);
}
