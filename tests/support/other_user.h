// SPDX-License-Identifier: Apache-2.0
// Checks of what permissions forbid, which the superuser would not notice.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>

#include <sys/wait.h>
#include <unistd.h>

namespace sarn_test {

/// A user and group without rights of their own.
constexpr unsigned nobody = 65534;

/// Runs `check` in a copy of the process that has the rights of an ordinary user, and expects it to pass there.
template <class Check>
void expectAsOrdinaryUser(Check check) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const bool isOrdinary = ::geteuid() != 0 || (::setgid(nobody) == 0 && ::setuid(nobody) == 0);
        EXPECT_TRUE(isOrdinary);
        if (isOrdinary)
            check();
        std::fflush(nullptr);
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "the failures stand above";
}

} // namespace sarn_test
