// SPDX-License-Identifier: Apache-2.0
#include "ul/thread.h"

#include "threads/thread_identity.h"

#include <windows.h>

namespace ul {

std::uint64_t CThread::getCurrentID() noexcept {
    return ::GetCurrentThreadId();
}

std::uint64_t getThreadIdentity() noexcept {
    return ::GetCurrentThreadId();
}

} // namespace ul
