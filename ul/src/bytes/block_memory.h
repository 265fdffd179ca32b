// SPDX-License-Identifier: Apache-2.0
// Memory for the blocks of buffers.
#pragma once

namespace ul {

// Sizes are in bytes and positive. Operators new and delete are not used, because they cannot extend a block in place
// or move its pages without copying, which matters when a buffer grows to many megabytes.

/// Allocates a block. Throws std::bad_alloc if memory is exhausted.
void* allocateMemory(int size);
/// Resizes a block, which may be null, to `size` bytes and keeps the content that fits. The block may move. Throws
/// std::bad_alloc if memory is exhausted; the block is unchanged then.
void* resizeMemory(void* block, int size);
/// Frees a block, which may be null.
void freeMemory(void* block) noexcept;

} // namespace ul
