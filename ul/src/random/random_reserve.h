// SPDX-License-Identifier: Apache-2.0
// Random bytes drawn in advance.
#pragma once

#include <atomic>
#include <cstddef>

namespace ul {

/// Hands out bytes of the operating system's generator, drawn in blocks: one system call serves many small requests.
/// Each byte is handed out once and then wiped. A forked process never sees bytes that its parent has drawn; it draws
/// its own.
///
/// Threads, signal handlers and forked processes may call take() at any moment and never wait for each other: one
/// caller uses the block, and the system serves all others directly.
class RandomReserve {
public:
    RandomReserve() noexcept;
    RandomReserve(const RandomReserve&) = delete;
    RandomReserve& operator=(const RandomReserve&) = delete;
    ~RandomReserve();

    /// Fills `size` bytes, or raises the error that CMTRand::randData() documents.
    void take(unsigned char* data, std::size_t size);

private:
    struct Block;

    // Null if the system cannot keep bytes from a forked process: then none are drawn in advance.
    Block* m_block;
    // Whether a caller is using the block. In a process that another thread forked in the meantime it stays true for
    // good, and the system serves every request.
    std::atomic<bool> m_isInUse{false};
};

} // namespace ul
