// SPDX-License-Identifier: Apache-2.0
#include "random/private_memory.h"

#include <sys/mman.h>

namespace ul {

void* allocatePrivateMemory(std::size_t size) noexcept {
#ifdef MADV_WIPEONFORK
    void* const memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return nullptr;
    // Emulators of other processors accept all advice and may ignore it, so one that is unknown must be refused first.
    constexpr int unknownAdvice = -1;
    if (::madvise(memory, size, unknownAdvice) != 0 && ::madvise(memory, size, MADV_WIPEONFORK) == 0) {
        // The bytes are secret until they are used; keep them out of core files. Failure is harmless and ignored.
        ::madvise(memory, size, MADV_DONTDUMP);
        return memory;
    }
    ::munmap(memory, size);
#else
    static_cast<void>(size);
#endif
    return nullptr;
}

void freePrivateMemory(void* memory, std::size_t size) noexcept {
    ::munmap(memory, size);
}

} // namespace ul
