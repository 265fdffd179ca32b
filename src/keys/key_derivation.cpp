// SPDX-License-Identifier: Apache-2.0
#include "sarn/key_derivation.h"

#include "frame/error_queue_mark.h"
#include "frame/raise.h"

#include "sarn/openssl_init.h"

#include <openssl/evp.h>

namespace sarn {

void deriveKey_PKCS5_PBKDF2_HMAC_SHA1(const void* password, int passwordSize, const void* salt, int saltSize,
                                      int iterations, int keySize, void* key) {
    COpenSSLInit::ensureInitialized();
    const ErrorQueueMark mark;
    // libcrypto validates the arguments, but it would take negative values of these two sizes for huge ones, and
    // dereference null pointers.
    const bool isDone = (salt ? saltSize >= 0 : saltSize == 0) && (key ? keySize >= 0 : keySize == 0) &&
                        PKCS5_PBKDF2_HMAC_SHA1(passwordSize != 0 ? static_cast<const char*>(password) : "",
                                               passwordSize, static_cast<const unsigned char*>(salt), saltSize,
                                               iterations, keySize, static_cast<unsigned char*>(key));
    if (!isDone)
        raiseError("Error deriving cryptographic key from password.");
}

} // namespace sarn
