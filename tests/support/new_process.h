// SPDX-License-Identifier: Apache-2.0
// Checks that need a new process.
#pragma once

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

namespace sarn_test {

/// Expects `check` to pass in a new process. Its failures are part of the message. The name of the suite must end in
/// "DeathTest".
template <class Check>
void expectInNewProcess(Check check) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            testing::TestPartResultArray results;
            {
                const testing::ScopedFakeTestPartResultReporter reporter(
                    testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &results);
                check();
            }
            for (int i = 0; i < results.size(); ++i)
                std::cerr << results.GetTestPartResult(i) << std::endl;
            std::exit(results.size() == 0 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

} // namespace sarn_test
