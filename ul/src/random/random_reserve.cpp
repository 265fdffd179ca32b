// SPDX-License-Identifier: Apache-2.0
#include "random/random_reserve.h"

#include "random/private_memory.h"
#include "random/system_random.h"

#include "ul/buffer.h"

#include <atomic>
#include <cstring>

namespace ul {

namespace {

constexpr std::size_t blockSize = 4096;
// Larger requests would use up a block too soon to save anything.
constexpr std::size_t largestPiece = 256;
// How many bytes are left while the block is being filled, and after that failed.
constexpr std::size_t beingFilled = static_cast<std::size_t>(-1);

/// Gives the block back, also when the system fails.
class Turn {
public:
    explicit Turn(std::atomic<bool>& isInUse) noexcept : m_isInUse(isInUse) {}
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() { m_isInUse.store(false, std::memory_order_release); }

private:
    std::atomic<bool>& m_isInUse;
};

} // namespace

struct RandomReserve::Block {
    // How many of the bytes, counted from the front, are still to be handed out. As part of the block it is 0 after a
    // fork, which may even happen in a signal handler in the middle of take(): hence an atomic.
    std::atomic<std::size_t> left;
    unsigned char bytes[blockSize - sizeof(std::size_t)];
};

RandomReserve::RandomReserve() noexcept : m_block(static_cast<Block*>(allocatePrivateMemory(sizeof(Block)))) {
    static_assert(sizeof(Block) == blockSize && std::atomic<std::size_t>::is_always_lock_free);
}

RandomReserve::~RandomReserve() {
    if (m_block)
        wipe(m_block->bytes, sizeof m_block->bytes);
    freePrivateMemory(m_block, sizeof(Block));
}

void RandomReserve::take(unsigned char* data, std::size_t size) {
    if (!m_block || size > largestPiece || m_isInUse.exchange(true, std::memory_order_acquire)) {
        fillFromSystemGenerator(data, size);
        return;
    }
    const Turn turn(m_isInUse);
    for (;;) {
        const std::size_t left = m_block->left;
        if (left < size || left == beingFilled) {
            m_block->left = beingFilled;
            fillFromSystemGenerator(m_block->bytes, sizeof m_block->bytes);
            // Unchanged only if no fork wiped what was filled.
            std::size_t mark = beingFilled;
            m_block->left.compare_exchange_strong(mark, sizeof m_block->bytes);
            continue;
        }
        std::memcpy(data, m_block->bytes + left - size, size);
        // In a process that was forked since the first look the copy may be of wiped bytes.
        std::size_t expected = left;
        if (m_block->left.compare_exchange_strong(expected, left - size)) {
            wipe(m_block->bytes + left - size, size);
            return;
        }
    }
}

} // namespace ul
