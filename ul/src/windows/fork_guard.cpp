// SPDX-License-Identifier: Apache-2.0
// There is no fork().
#include "fork_guard.h"

#include "ul/fork_delay.h"

namespace ul {

bool ForkGuard::start() noexcept {
    return true;
}

void ForkGuard::add(CForkSafeMutex&) {}

void ForkGuard::remove(CForkSafeMutex&) noexcept {}

CForkDelay::CForkDelay() noexcept = default;

CForkDelay::~CForkDelay() = default;

} // namespace ul
