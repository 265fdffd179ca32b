// SPDX-License-Identifier: Apache-2.0
#include "ul/fork_safe_mutex.h"

#include "fork_guard.h"

namespace ul {

CForkSafeMutex::CForkSafeMutex() {
    ForkGuard::add(*this);
}

CForkSafeMutex::~CForkSafeMutex() {
    ForkGuard::remove(*this);
}

} // namespace ul
