// SPDX-License-Identifier: Apache-2.0
// Memory that belongs to one process alone.
#pragma once

#include <cstddef>

namespace ul {

/// Allocates `size` bytes, all zero, that a forked process finds zero again whatever was in them here. Null if the
/// system has no such memory.
void* allocatePrivateMemory(std::size_t size) noexcept;

/// Gives back what allocatePrivateMemory() gave. Null is fine.
void freePrivateMemory(void* memory, std::size_t size) noexcept;

} // namespace ul
