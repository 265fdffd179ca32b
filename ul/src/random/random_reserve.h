// SPDX-License-Identifier: Apache-2.0
// Random bytes drawn ahead of use.
#pragma once

#include <atomic>
#include <cstddef>

namespace ul {

/// Hands out bytes of the operating system's generator, which it draws in blocks: one system call for many small
/// requests. Each byte is handed out once and wiped when it is. A forked process never sees the bytes that its parent
/// has drawn, and draws its own.
///
/// Any thread, a signal handler and a forked process may ask at any moment, and none waits for another: one is served
/// from the block, and whoever comes meanwhile by the system itself.
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

    // Null where bytes cannot be kept from a forked process: then none are drawn ahead.
    Block* m_block;
    // Whether somebody is served from the block. In a process that was forked meanwhile it stays so for good, unless
    // that somebody forked, and the system serves every request.
    std::atomic<bool> m_isInUse{false};
};

} // namespace ul
