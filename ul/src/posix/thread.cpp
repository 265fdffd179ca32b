// SPDX-License-Identifier: Apache-2.0
#include "ul/thread.h"

#include <pthread.h>

namespace ul {

std::uint64_t CThread::getCurrentID() noexcept {
    return static_cast<std::uint64_t>(::pthread_self());
}

} // namespace ul
