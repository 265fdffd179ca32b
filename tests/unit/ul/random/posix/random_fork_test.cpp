// SPDX-License-Identifier: Apache-2.0
// No two processes see the same random bytes.
#include "ul/random.h"

#include <gtest/gtest.h>

#include <array>
#include <future>
#include <set>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

TEST(CMTRand, Fork_GivesParentAndChildrenDifferentBytes) {
    using Block = std::array<unsigned char, 16>;
    const auto draw = [] {
        Block block{};
        ul::CMTRand::getGlobal()->randData(block.data(), 16);
        return block;
    };
    std::set<Block> blocks{draw()};
    constexpr int children = 32;
    for (int i = 0; i < children; ++i) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe(ends.data()), 0);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            const Block block = draw();
            ::_exit(::write(ends[1], block.data(), block.size()) == 16 ? 0 : 1);
        }
        Block block{};
        EXPECT_EQ(::read(ends[0], block.data(), block.size()), 16);
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
        ::close(ends[0]);
        ::close(ends[1]);
        blocks.insert(block);
        blocks.insert(draw());
    }
    EXPECT_EQ(blocks.size(), 1U + 2 * children);
}

TEST(CMTRand, ForkWhileAnotherThreadHoldsTheMutex_LetsTheChildDrawWithoutWaiting) {
    ul::CMTRand::getGlobal();
    std::promise<void> isHeld;
    std::promise<void> mayEnd;
    std::thread holder([&] {
        const ul::CMutexLock lock(*ul::CMTRand::getGlobalInstanceMutex());
        isHeld.set_value();
        mayEnd.get_future().wait();
    });
    isHeld.get_future().wait();
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(10);
        std::array<unsigned char, 16> block{};
        ul::CMTRand::getGlobal()->randData(block.data(), 16);
        ::_exit(block == std::array<unsigned char, 16>{} ? 1 : 0);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    mayEnd.set_value();
    holder.join();
}
