// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cerrno>

namespace ul {

/// Repeats a system call until no signal interrupts it.
template <class Call>
auto retryInterrupted(Call call) {
    for (;;) {
        const auto result = call();
        if (result >= 0 || errno != EINTR)
            return result;
    }
}

} // namespace ul
