// SPDX-License-Identifier: Apache-2.0
#include "random/private_memory.h"

#include <windows.h>

namespace ul {

// Windows has no fork.
void* allocatePrivateMemory(std::size_t size) noexcept {
    return ::VirtualAlloc(nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
}

void freePrivateMemory(void* memory, std::size_t) noexcept {
    ::VirtualFree(memory, 0, MEM_RELEASE);
}

} // namespace ul
