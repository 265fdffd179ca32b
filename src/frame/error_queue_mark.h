// SPDX-License-Identifier: Apache-2.0
// libcrypto's error queue.
#pragma once

#include "frame/raise.h"

#include <openssl/err.h>

namespace sarn {

/// Leaves libcrypto's error queue of this thread as it was found when an operation ends. A host that asks the queue
/// after calls of its own must not find our failures there, nor miss an error or a mark of its own.
class ErrorQueueMark {
public:
    ErrorQueueMark() noexcept;
    ErrorQueueMark(const ErrorQueueMark&) = delete;
    ErrorQueueMark& operator=(const ErrorQueueMark&) = delete;
    ~ErrorQueueMark() {
        // Mostly the queue was empty, and an operation that succeeds adds nothing: there is nothing to do.
        if (m_holdsHosts)
            restore();
    }

    /// Drops what was queued since and throws a ul::CError.
    [[noreturn]] void raise(const char* message) {
        drop();
        raiseError(message);
    }

    /// Drops what was queued since. For operations that succeed where libcrypto reports a failure.
    void drop() noexcept;

private:
    void restore() noexcept;

#if OPENSSL_VERSION_NUMBER < 0x30000000L
    // A mark is a flag of one error there. One of ours would take a mark of the host's with it, and is lost when
    // libcrypto sets and pops one in between; so the host's errors are moved aside, and libcrypto finds an empty queue.
    static bool moveAside(ERR_STATE& hosts) noexcept;
    static void putBack(const ERR_STATE& hosts) noexcept;

    ERR_STATE m_hosts;
#endif
    // Whether there was anything to hold: an empty queue takes no mark.
    bool m_holdsHosts;
};

#if OPENSSL_VERSION_NUMBER < 0x30000000L

inline ErrorQueueMark::ErrorQueueMark() noexcept : m_holdsHosts(ERR_peek_error() != 0 && moveAside(m_hosts)) {}

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
