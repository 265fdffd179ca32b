// SPDX-License-Identifier: Apache-2.0
// libcrypto's error queue.
#pragma once

#include "frame/raise.h"

#include <openssl/err.h>

namespace sarn {

/// Leaves libcrypto's error queue of this thread as it was found when an operation fails. A host that asks the queue
/// after calls of its own must not find our failures there.
class ErrorQueueMark {
public:
    ErrorQueueMark() noexcept : m_isSet(ERR_set_mark() != 0) {}
    ErrorQueueMark(const ErrorQueueMark&) = delete;
    ErrorQueueMark& operator=(const ErrorQueueMark&) = delete;
    ~ErrorQueueMark() {
        // An empty queue takes no mark, and an operation that succeeds adds nothing: mostly there is nothing to do.
        if (m_isSet)
            ERR_pop_to_mark();
    }

    /// Drops what was queued since the mark and throws a ul::CError.
    [[noreturn]] void raise(const char* message) {
        drop();
        raiseError(message);
    }

    /// Drops what was queued since the mark; all of it if the queue was empty then.
    void drop() noexcept {
        ERR_pop_to_mark();
        m_isSet = false;
    }

private:
    bool m_isSet;
};

} // namespace sarn
