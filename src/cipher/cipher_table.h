// SPDX-License-Identifier: Apache-2.0
// The ciphers of libcrypto that the library knows.
#pragma once

#include "sarn/cipher_interface.h"
#include "sarn/openssl_cipher.h"

#include "ul/pointer.h"

#include <array>

namespace sarn {

/// One cipher.
struct CipherRow {
    /// The identifier that hosts store.
    const char* id;
    /// The name under which libcrypto 3 fetches it.
    const char* libcryptoName;
    /// libcrypto's own description, which knows the sizes; null if libcrypto was built without the cipher.
    const EVP_CIPHER* (*getBuiltIn)();
    /// Whether libcrypto 3 keeps it in its legacy provider.
    bool isLegacy;
    /// Whether the registry offers it unasked.
    bool isOffered;
    ul::P<ICipher> (*create)();
};

/// All of them, in the order in which the registry adds them.
const std::array<CipherRow, 5>& getCipherTable();

} // namespace sarn
