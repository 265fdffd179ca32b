// SPDX-License-Identifier: Apache-2.0
#include "bytes/block_memory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace ul {

void* allocateMemory(int size) {
    return resizeMemory(nullptr, size);
}

void* resizeMemory(void* block, int size) {
    void* const resized = std::realloc(block, static_cast<std::size_t>(size));
    if (!resized)
        throw std::bad_alloc();
    return resized;
}

void freeMemory(void* block) noexcept {
    std::free(block);
}

} // namespace ul
