// SPDX-License-Identifier: Apache-2.0
#include "sarn/version.h"

#include <openssl/crypto.h>

namespace sarn {

// Compiled into this library instead of asking the base library, which may be newer.
int getVersion() noexcept {
    return SARN_VERSION;
}

const char* getVersionText() noexcept {
    return UL_VERSION_TEXT;
}

unsigned long getLibcryptoVersion() noexcept {
    return OpenSSL_version_num();
}

const char* getLibcryptoVersionText() noexcept {
    return OpenSSL_version(OPENSSL_VERSION);
}

} // namespace sarn
