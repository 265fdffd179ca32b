// SPDX-License-Identifier: Apache-2.0
// libcrypto's error queue.
#pragma once

#include <openssl/err.h>

namespace sarn {

/// Leaves libcrypto's error queue of this thread as it was found: what is queued during the life of this object is
/// dropped at its end. A host that asks the queue after calls of its own must not find our failures there.
class ErrorQueueMark {
public:
    ErrorQueueMark() noexcept { ERR_set_mark(); }
    ErrorQueueMark(const ErrorQueueMark&) = delete;
    ErrorQueueMark& operator=(const ErrorQueueMark&) = delete;
    // If the queue was empty there was nothing to mark, and this drops all of it, which is right as well.
    ~ErrorQueueMark() { ERR_pop_to_mark(); }
};

} // namespace sarn
