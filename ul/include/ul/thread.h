// SPDX-License-Identifier: Apache-2.0
/// \file
/// Threads.
#pragma once

#include "ul/export.h"

#include <cstdint>

namespace ul {

/// Facts about threads.
class UL_EXPORT CThread {
public:
    /// Identifier of the calling thread; never 0, and no other living thread's.
    static std::uint64_t getCurrentID() noexcept;
};

} // namespace ul
