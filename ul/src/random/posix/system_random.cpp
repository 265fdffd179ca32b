// SPDX-License-Identifier: Apache-2.0
#include "random/system_random.h"

#include "errors/raise.h"

#include <cerrno>

#include <sys/random.h>

namespace ul {

void fillFromSystemGenerator(unsigned char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t count = ::getrandom(data, size, 0);
        if (count < 0) {
            if (errno == EINTR)
                continue;
            raiseError("Random bytes are not available.", CProps().add("reason", describeSystemError(errno)));
        }
        data += count;
        size -= static_cast<std::size_t>(count);
    }
}

} // namespace ul
