// SPDX-License-Identifier: Apache-2.0
// libcrypto's error queue.
#pragma once

#include "frame/raise.h"

#include <openssl/err.h>

namespace sarn {

/// Restores this thread's libcrypto error queue when an operation ends. A host that inspects the queue after its own
/// calls must not find our failures there, and must not lose its errors or marks.
class ErrorQueueMark {
public:
    ErrorQueueMark() noexcept;
    ErrorQueueMark(const ErrorQueueMark&) = delete;
    ErrorQueueMark& operator=(const ErrorQueueMark&) = delete;
    ~ErrorQueueMark() {
        // Usually the queue was empty and a successful operation adds nothing, so there is nothing to do.
        if (m_holdsHosts)
            restore();
    }

    /// Drops errors queued since construction and raises a ul::CError.
    [[noreturn]] void raise(const char* message) {
        drop();
        raiseError(message);
    }

    /// Drops errors queued since construction. For operations that succeed although libcrypto reports a failure.
    void drop() noexcept;

private:
    void restore() noexcept;

#if OPENSSL_VERSION_NUMBER < 0x30000000L
    // A mark is a flag on one error in the queue. A mark of ours would remove the host's mark from that error, and is
    // lost if libcrypto sets and pops its own in between. Therefore the host's errors are moved aside, and libcrypto
    // works on an empty queue.
    static bool hasErrors() noexcept {
        // Faster than ERR_peek_error(), and every operation asks.
        const ERR_STATE* const queue = ERR_get_state();
        return queue && queue->top != queue->bottom;
    }
    static bool moveAside(ERR_STATE& hosts) noexcept;
    static void putBack(const ERR_STATE& hosts) noexcept;

    ERR_STATE m_hosts;
#endif
    // Whether the queue had errors, which were moved aside or marked: an empty queue cannot take a mark.
    bool m_holdsHosts;
};

#if OPENSSL_VERSION_NUMBER < 0x30000000L

inline ErrorQueueMark::ErrorQueueMark() noexcept : m_holdsHosts(hasErrors() && moveAside(m_hosts)) {}

inline void ErrorQueueMark::restore() noexcept {
    putBack(m_hosts);
}

inline void ErrorQueueMark::drop() noexcept {
    if (ERR_peek_error() != 0)
        ERR_clear_error();
}

#else

inline ErrorQueueMark::ErrorQueueMark() noexcept : m_holdsHosts(ERR_set_mark() != 0) {}

inline void ErrorQueueMark::restore() noexcept {
    ERR_pop_to_mark();
}

inline void ErrorQueueMark::drop() noexcept {
    ERR_pop_to_mark();
    m_holdsHosts = false;
}

#endif

} // namespace sarn
