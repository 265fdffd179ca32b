// SPDX-License-Identifier: Apache-2.0
// Overlap of input and output.
#pragma once

#include "ul/buffer.h"

#include <cstdint>

namespace sarn {

/// Whether any of the `size` bytes at `data` is inside the buffer's block.
inline bool overlaps(const void* data, int size, const ul::TBuffer<unsigned char>& buffer) {
    // Compared as numbers, because pointers into different blocks have no defined order.
    const auto block = reinterpret_cast<std::uintptr_t>(buffer.getData());
    const auto begin = reinterpret_cast<std::uintptr_t>(data);
    const auto allocated = static_cast<std::uintptr_t>(buffer.getAllocated());
    return size > 0 && begin + static_cast<std::uintptr_t>(size) > block && begin < block + allocated;
}

} // namespace sarn
