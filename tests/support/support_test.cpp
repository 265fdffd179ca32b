// SPDX-License-Identifier: Apache-2.0
// Tests of the helpers for tests.
#include "support/print.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace sarn_test {

TEST(PrintTo, Text_ShowsIt) {
    EXPECT_EQ(testing::PrintToString(ul::String(L"caf\xE9")), "\"caf\xC3\xA9\"");
    EXPECT_EQ(testing::PrintToString(ul::String(std::wstring(1, wchar_t(0xD800)))), "\"?\" (not Unicode)");
}

TEST(RunOnThreads, EachNumber_IsGivenOnce) {
    std::atomic<int> sum{0};
    runOnThreads(8, [&](int number) { sum += 1 << number; });
    EXPECT_EQ(sum, 255);
}

TEST(RunOnThreads, Threads_ExistAllAtOnce) {
    // Nobody would get on if another one had to end first.
    std::atomic<int> waiting{4};
    runOnThreads(4, [&](int) {
        for (--waiting; waiting > 0;)
            std::this_thread::yield();
    });
    EXPECT_EQ(waiting, 0);
}

TEST(RunOnThreads, ErrorOfOne_ReachesTheCaller) {
    std::atomic<int> ended{0};
    EXPECT_THROW(runOnThreads(4,
                              [&](int number) {
                                  ++ended;
                                  if (number == 2)
                                      throw std::runtime_error("wrong");
                              }),
                 std::runtime_error);
    EXPECT_EQ(ended, 4);
}

} // namespace sarn_test
