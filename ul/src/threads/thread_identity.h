// SPDX-License-Identifier: Apache-2.0
// Who holds a mutex.
#pragma once

#include <cstdint>

namespace ul {

/// A number of the calling thread, never 0. Where there is POSIX no later thread of the process gets it; elsewhere the
/// system may give it again to a thread that starts after this one ended.
std::uint64_t getThreadIdentity() noexcept;

} // namespace ul
