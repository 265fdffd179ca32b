// SPDX-License-Identifier: Apache-2.0
// One message that passes through libcrypto.
#pragma once

#include "cipher/arguments.h"
#include "frame/error_queue_mark.h"
#include "frame/openssl_owners.h"
#include "frame/raise.h"

#include <openssl/evp.h>

namespace sarn {

/// Encrypts or decrypts one message with libcrypto. Raises the errors that hosts know if libcrypto fails, and leaves
/// its error queue unchanged.
template <bool IsEncrypting>
class CipherRun {
public:
    CipherRun() : m_context(EVP_CIPHER_CTX_new()) {
        if (m_context)
            EVP_CIPHER_CTX_reset(m_context.get());
    }

    /// Sets key, IV and padding. The error names encryption even for decryption: hosts match this text.
    void begin(const EVP_CIPHER* cipher, const Key& key, const unsigned char* iv, bool isPadded) {
        if (!m_context || !init(cipher, key, iv) || !(isPadded || EVP_CIPHER_CTX_set_padding(m_context.get(), 0)))
            raiseError("OpenSSL encrypt init error.");
    }

    /// Processes `size` bytes and returns the number of bytes written to `result`.
    int update(unsigned char* result, const unsigned char* data, int size) {
        int written = 0;
        check(IsEncrypting ? EVP_EncryptUpdate(m_context.get(), result, &written, data, size)
                           : EVP_DecryptUpdate(m_context.get(), result, &written, data, size));
        return written;
    }

    /// Processes the last block and returns the number of bytes written to `result`.
    int finish(unsigned char* result) {
        int written = 0;
        check(IsEncrypting ? EVP_EncryptFinal(m_context.get(), result, &written)
                           : EVP_DecryptFinal(m_context.get(), result, &written));
        return written;
    }

private:
    bool init(const EVP_CIPHER* cipher, const Key& key, const unsigned char* iv) {
        return (IsEncrypting ? EVP_EncryptInit(m_context.get(), cipher, key.getData(), iv)
                             : EVP_DecryptInit(m_context.get(), cipher, key.getData(), iv)) != 0;
    }

    void check(int hasSucceeded) {
        if (!hasSucceeded)
            raiseError(IsEncrypting ? "OpenSSL encrypt error." : "OpenSSL decrypt error.");
    }

    ErrorQueueMark m_mark;
    CipherContextPtr m_context;
};

using Encryption = CipherRun<true>;
using Decryption = CipherRun<false>;

} // namespace sarn
