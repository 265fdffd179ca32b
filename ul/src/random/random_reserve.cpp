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
// A larger request would use up a block too fast to save anything.
constexpr std::size_t largestPiece = 256;
// Values of `left` while the block is being filled, and after that failed.
constexpr std::size_t beingFilled = static_cast<std::size_t>(-1);

/// Releases the block, even if the system fails.
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
    // Number of bytes, from the front of the block, not yet handed out. It is inside the block, so it is 0 after a
    // fork. A fork may happen in a signal handler in the middle of take(): hence atomic.
    std::atomic<std::size_t> left;
    unsigned char bytes[blockSize - sizeof(std::size_t)];
};

RandomReserve::RandomReserve() noexcept : m_block(static_cast<Block*>(allocatePrivateMemory(sizeof(Block)))) {
    static_assert(sizeof(Block) == blockSize && std::atomic<std::size_t>::is_always_lock_free);
}

RandomReserve::~RandomReserve() {
    if (!m_block)
        return;
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
            // Unchanged only if no fork has wiped the new bytes.
            std::size_t mark = beingFilled;
            m_block->left.compare_exchange_strong(mark, sizeof m_block->bytes);
            continue;
        }
        std::memcpy(data, m_block->bytes + left - size, size);
        // If the process was forked since the first check, the copied bytes may be wiped ones.
        std::size_t expected = left;
        if (m_block->left.compare_exchange_strong(expected, left - size)) {
            wipe(m_block->bytes + left - size, size);
            return;
        }
    }
}

} // namespace ul
