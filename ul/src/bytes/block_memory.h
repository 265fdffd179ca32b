// SPDX-License-Identifier: Apache-2.0
// The memory of buffers' blocks.
#pragma once

namespace ul {

// Sizes are in bytes and above 0. Not the operators new and delete: they cannot make a block larger where it is, or
// move its pages without a copy, which is what growing to many megabytes would cost.

/// Throws std::bad_alloc if there is no memory.
void* allocateMemory(int size);
/// Makes a block, or null, `size` bytes long, maybe elsewhere, and keeps what fits. Throws std::bad_alloc if there is
/// no memory; the block is as it was then.
void* resizeMemory(void* block, int size);
/// Null is fine.
void freeMemory(void* block) noexcept;

} // namespace ul
