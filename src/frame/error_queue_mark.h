// SPDX-License-Identifier: Apache-2.0
// libcrypto's error queue.
#pragma once

#include <openssl/err.h>

namespace sarn {

/// Restores this thread's libcrypto error queue when an operation ends. A host that inspects the queue after its own
/// calls must not find our failures there, and must not lose its errors or marks.
class ErrorQueueMark {
public:
    ErrorQueueMark() noexcept;
    ErrorQueueMark(const ErrorQueueMark&) = delete;
    ErrorQueueMark& operator=(const ErrorQueueMark&) = delete;
    /// Drops errors queued since construction, also those of a successful operation: libcrypto tries some failed steps
    /// again.
    ~ErrorQueueMark();

#if OPENSSL_VERSION_NUMBER < 0x30000000L
private:
    // A mark is a flag on one error in the queue. A mark of ours would remove the host's mark from that error, and is
    // lost if libcrypto sets and pops its own in between. Therefore the host's errors are moved aside, and libcrypto
    // works on an empty queue.
    void moveAside() noexcept;
    void putBack() noexcept;
    // Faster than ERR_peek_error(), and every operation asks.
    bool hasErrors() const noexcept {
        return m_queue && m_queue->top != m_queue->bottom;
    }

    // This thread's queue; null if there is no memory for it.
    ERR_STATE* m_queue;
    ERR_STATE m_hosts;
    bool m_holdsHosts;
#endif
};

#if OPENSSL_VERSION_NUMBER < 0x30000000L

inline ErrorQueueMark::ErrorQueueMark() noexcept : m_queue(ERR_get_state()), m_holdsHosts(hasErrors()) {
    if (m_holdsHosts)
        moveAside();
}

inline ErrorQueueMark::~ErrorQueueMark() {
    if (!m_queue || hasErrors())
        ERR_clear_error();
    if (m_holdsHosts)
        putBack();
}

#else

// An empty queue cannot take a mark. Then all errors are dropped, and they are all from the operation.
inline ErrorQueueMark::ErrorQueueMark() noexcept {
    ERR_set_mark();
}

inline ErrorQueueMark::~ErrorQueueMark() {
    ERR_pop_to_mark();
}

#endif

} // namespace sarn
