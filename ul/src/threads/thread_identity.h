// SPDX-License-Identifier: Apache-2.0
// Identity of threads, for the owners of mutexes.
#pragma once

#include <cstdint>

namespace ul {

/// A number of the calling thread, never 0. On POSIX no later thread of the process gets the same one; elsewhere the
/// system may reuse it after this thread has ended.
std::uint64_t getThreadIdentity() noexcept;

} // namespace ul
