// SPDX-License-Identifier: Apache-2.0
#include "ul/fork_delay.h"

#include "fork_guard.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

#include <pthread.h>

namespace ul {

namespace {

// Threads that delay a fork.
std::atomic<int> delaying{0};
// Set by the thread that forks. Each side first tells of itself and then looks at the other, in one order for all, so
// that one of the two sees the other.
std::atomic<bool> isForking{false};

/// How many delays of the calling thread there are. Kept by the system and not in a thread_local, whose memory would
/// come and go with the library in a host that loads it late.
class OwnDelays {
public:
    OwnDelays() noexcept : m_isThere(::pthread_key_create(&m_key, nullptr) == 0) {}

    std::intptr_t get() const noexcept {
        return m_isThere ? reinterpret_cast<std::intptr_t>(::pthread_getspecific(m_key)) : 0;
    }
    /// False if there is no memory to remember it in.
    bool set(std::intptr_t count) const noexcept {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the system keeps a pointer, which nobody follows
        return m_isThere && ::pthread_setspecific(m_key, reinterpret_cast<void*>(count)) == 0;
    }

private:
    pthread_key_t m_key = 0;
    bool m_isThere;
};

const OwnDelays& getOwnDelays() noexcept {
    static const OwnDelays delays;
    return delays;
}

} // namespace

CForkDelay::CForkDelay() noexcept {
    // Without the system's calls nothing is delayed, which is no reason to fail.
    ForkGuard::start();
    const std::intptr_t own = getOwnDelays().get();
    m_isCounted = getOwnDelays().set(own + 1);
    if (own > 0 || !m_isCounted)
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
    if (!m_isCounted)
        return;
    const std::intptr_t own = getOwnDelays().get() - 1;
    getOwnDelays().set(own);
    if (own == 0)
        delaying.fetch_sub(1);
}

bool tryHoldDelays() {
    isForking = true;
    if (delaying.load() == (getOwnDelays().get() > 0 ? 1 : 0))
        return true;
    isForking = false;
    return false;
}

void letDelaysGo() {
    isForking = false;
}

} // namespace ul
