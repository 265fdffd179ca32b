// SPDX-License-Identifier: Apache-2.0
/// \file
/// Threads.
#pragma once

#include "ul/export.h"

#include <cstdint>

namespace ul {

/// Information about threads.
class UL_EXPORT CThread {
public:
    /// Identifier of the calling thread. It is never 0 and differs from those of all other running threads.
    static std::uint64_t getCurrentID() noexcept;
};

} // namespace ul
