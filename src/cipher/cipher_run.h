// SPDX-License-Identifier: Apache-2.0
// What the operations of a cipher share: a message passing through libcrypto.
#pragma once

#include "cipher/arguments.h"
#include "frame/error_queue_mark.h"
#include "frame/openssl_owners.h"

#include <openssl/evp.h>

namespace sarn {

/// One message on its way through libcrypto. What libcrypto refuses is raised with the text that hosts know, and its
/// error queue is left as it was.
class CipherRun {
public:
    enum Direction { Encrypt, Decrypt };

    explicit CipherRun(Direction direction) : m_isEncrypting(direction == Encrypt), m_context(EVP_CIPHER_CTX_new()) {
        if (m_context)
            EVP_CIPHER_CTX_reset(m_context.get());
    }

    /// Also when it decrypts, the error is about encrypting: hosts match this text.
    void begin(const EVP_CIPHER* cipher, const Key& key, const unsigned char* iv, bool isPadded) {
        if (!m_context || !init(cipher, key, iv) || !(isPadded || EVP_CIPHER_CTX_set_padding(m_context.get(), 0)))
            m_mark.raise("OpenSSL encrypt init error.");
    }

    /// Writes to `result` and returns how many bytes.
    int update(unsigned char* result, const unsigned char* data, int size) {
        int written = 0;
        check(m_isEncrypting ? EVP_EncryptUpdate(m_context.get(), result, &written, data, size)
                             : EVP_DecryptUpdate(m_context.get(), result, &written, data, size));
        return written;
    }

    /// The same for the last bytes.
    int finish(unsigned char* result) {
        int written = 0;
        check(m_isEncrypting ? EVP_EncryptFinal(m_context.get(), result, &written)
                             : EVP_DecryptFinal(m_context.get(), result, &written));
        return written;
    }

private:
    bool init(const EVP_CIPHER* cipher, const Key& key, const unsigned char* iv) {
        return (m_isEncrypting ? EVP_EncryptInit(m_context.get(), cipher, key.getData(), iv)
                               : EVP_DecryptInit(m_context.get(), cipher, key.getData(), iv)) != 0;
    }

    void check(int hasSucceeded) {
        if (!hasSucceeded)
            m_mark.raise(m_isEncrypting ? "OpenSSL encrypt error." : "OpenSSL decrypt error.");
    }

    bool m_isEncrypting;
    ErrorQueueMark m_mark;
    CipherContextPtr m_context;
};

} // namespace sarn
