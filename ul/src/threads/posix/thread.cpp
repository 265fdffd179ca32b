// SPDX-License-Identifier: Apache-2.0
#include "ul/thread.h"

#include "threads/thread_identity.h"

#include <atomic>

#include <pthread.h>

namespace ul {

std::uint64_t CThread::getCurrentID() noexcept {
    return static_cast<std::uint64_t>(::pthread_self());
}

namespace {

// Not pthread_self(): the system reuses its values as soon as a thread has ended.
std::atomic<std::uint64_t> lastIdentity{0};
thread_local std::uint64_t ownIdentity = 0;

} // namespace

std::uint64_t getThreadIdentity() noexcept {
    std::uint64_t& identity = ownIdentity;
    if (identity == 0)
        identity = ++lastIdentity;
    return identity;
}

} // namespace ul
