// SPDX-License-Identifier: Apache-2.0
// A cipher and the raw calls that do the same.
#pragma once

#include "measure.h"

#include <sarn/cipher.h>

#include <openssl/evp.h>

namespace bench {

using Buffer = ul::TBuffer<unsigned char>;
using Key = ul::TCryptBuffer<unsigned char>;

struct Cipher {
    /// \param name libcrypto's name of the cipher
    Cipher(const std::string& id, const char* name);

    /// Processes one message and returns the number of bytes written to `out`.
    int runRaw(bool isEncrypting, bool isPadded, const void* data, int size, unsigned char* out) const;

    ul::P<sarn::ICipher> ours;
    const EVP_CIPHER* raw;
    Key key;
    unsigned char iv[16] = {3};
};

} // namespace bench
