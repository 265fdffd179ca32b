// SPDX-License-Identifier: Apache-2.0
#include "random/system_random.h"

#include "errors/raise.h"

#include <windows.h>
#include <bcrypt.h>

namespace ul {

void fillFromSystemGenerator(unsigned char* data, std::size_t size) {
    const NTSTATUS status = ::BCryptGenRandom(nullptr, data, static_cast<ULONG>(size), BCRYPT_USE_SYSTEM_PREFERRED_RNG);
    if (status < 0)
        raiseError("Random bytes are not available.",
                   CProps().add("reason", "0x" + toHexString(static_cast<int>(status))));
}

} // namespace ul
