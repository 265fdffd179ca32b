// SPDX-License-Identifier: Apache-2.0
// The table of libcrypto's ciphers.
#pragma once

#include "sarn/cipher_interface.h"
#include "sarn/openssl_cipher.h"

#include "ul/pointer.h"

#include <array>

namespace sarn {

/// One row of the table.
struct CipherRow {
    /// The identifier that hosts store.
    const char* id;
    /// The name by which libcrypto 3 fetches it.
    const char* libcryptoName;
    /// libcrypto's built-in description, which knows the sizes; null if libcrypto was built without the cipher.
    const EVP_CIPHER* (*getBuiltIn)();
    /// Whether libcrypto 3 has it in its legacy provider.
    bool isLegacy;
    /// Whether the registry offers it by default.
    bool isOffered;
    ul::P<ICipher> (*create)();
};

/// All rows, in the order in which the registry adds them.
const std::array<CipherRow, 5>& getCipherTable();

} // namespace sarn
