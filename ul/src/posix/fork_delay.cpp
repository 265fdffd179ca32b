// SPDX-License-Identifier: Apache-2.0
#include "ul/fork_delay.h"

#include "fork_guard.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace ul {

namespace {

// Threads that delay a fork.
std::atomic<int> delaying{0};
// Set by the thread that forks. Each side first tells of itself and then looks at the other, in one order for all, so
// that one of the two sees the other.
std::atomic<bool> isForking{false};
thread_local int ownDelays = 0;

} // namespace

CForkDelay::CForkDelay() noexcept {
    // Without the system's calls nothing is delayed, which is no reason to fail.
    ForkGuard::start();
    if (ownDelays++ > 0)
        return;
    for (;;) {
        delaying.fetch_add(1);
        if (!isForking.load())
            return;
        delaying.fetch_sub(1);
        std::this_thread::sleep_for(std::chrono::microseconds(20));
    }
}

CForkDelay::~CForkDelay() {
    if (--ownDelays == 0)
        delaying.fetch_sub(1);
}

bool tryHoldDelays() {
    isForking = true;
    if (delaying.load() == (ownDelays > 0 ? 1 : 0))
        return true;
    isForking = false;
    return false;
}

void letDelaysGo() {
    isForking = false;
}

} // namespace ul
