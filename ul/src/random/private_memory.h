// SPDX-License-Identifier: Apache-2.0
// Memory that a forked process does not inherit.
#pragma once

#include <cstddef>

namespace ul {

/// Allocates `size` bytes, all zero. A forked process finds them zero again, whatever the parent wrote. Returns null if
/// the system does not support this.
void* allocatePrivateMemory(std::size_t size) noexcept;

/// Frees the result of allocatePrivateMemory(), which must not be null.
void freePrivateMemory(void* memory, std::size_t size) noexcept;

} // namespace ul
