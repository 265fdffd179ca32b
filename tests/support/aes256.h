// SPDX-License-Identifier: Apache-2.0
// AES-256 under a key and an IV that tests share.
#pragma once

#include "support/cipher_test_data.h"

namespace sarn_test {

inline const TestKey key32(32);
inline const Bytes iv16 = makePattern(16);

inline ul::P<sarn::ICipher> getAES256() {
    return getAnyCipher("aes256cbc");
}

inline void runAES256(const CipherOperation& operation, const void* data, int size, Buffer& out, bool append,
                      const unsigned char* iv) {
    ((*getAES256()).*operation.function)(key32, data, size, out, append, iv);
}

inline Bytes runAES256(const CipherOperation& operation, const Bytes& data, const unsigned char* iv = iv16.data()) {
    return runCipher(*getAES256(), operation, data, iv);
}

inline void expectRefused(const CipherOperation& operation, const char* message, const void* data, int size,
                          Buffer& out, bool append, const unsigned char* iv,
                          const ul::TCryptBuffer<unsigned char>& key = key32) {
    SCOPED_TRACE(operation.name + (" of " + std::to_string(size)));
    expectInvalidArg(std::string("COpenSSLCipher::") + operation.name, message,
                     [&] { ((*getAES256()).*operation.function)(key, data, size, out, append, iv); });
}

} // namespace sarn_test
