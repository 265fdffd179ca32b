// SPDX-License-Identifier: Apache-2.0
#include "frame/error_queue_mark.h"

#if OPENSSL_VERSION_NUMBER < 0x30000000L

namespace sarn {

bool ErrorQueueMark::moveAside(ERR_STATE& hosts) noexcept {
    // The queue exists, because it has errors.
    ERR_STATE& queue = *ERR_get_state();
    hosts = queue;
    queue = ERR_STATE();
    return true;
}

void ErrorQueueMark::putBack(const ERR_STATE& hosts) noexcept {
    ERR_clear_error();
    *ERR_get_state() = hosts;
}

} // namespace sarn

#endif
