// SPDX-License-Identifier: Apache-2.0
// Input that lies where the output goes.
#pragma once

#include "ul/buffer.h"

#include <cstdint>

namespace sarn {

/// Whether any of `size` bytes at `data` lie in the buffer's block.
inline bool overlaps(const void* data, int size, const ul::TBuffer<unsigned char>& buffer) {
    // As numbers: pointers into different blocks have no order.
    const auto block = reinterpret_cast<std::uintptr_t>(buffer.getData());
    const auto begin = reinterpret_cast<std::uintptr_t>(data);
    const auto allocated = static_cast<std::uintptr_t>(buffer.getAllocated());
    return size > 0 && begin + static_cast<std::uintptr_t>(size) > block && begin < block + allocated;
}

} // namespace sarn
