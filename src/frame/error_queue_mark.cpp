// SPDX-License-Identifier: Apache-2.0
#include "frame/error_queue_mark.h"

#if OPENSSL_VERSION_NUMBER < 0x30000000L

namespace sarn {

void ErrorQueueMark::moveAside() noexcept {
    m_hosts = *m_queue;
    *m_queue = ERR_STATE();
}

void ErrorQueueMark::putBack() noexcept {
    *m_queue = m_hosts;
}

} // namespace sarn

#endif
