// SPDX-License-Identifier: Apache-2.0
// The ciphers for tests, and their operations.
#pragma once

#include "support/expect.h"

#include "sarn/cipher.h"

#include <openssl/opensslconf.h>

namespace sarn_test {

struct CipherSizes {
    const char* id;
    int key;
    int iv;
    int block;
};

/// The registered ciphers over libcrypto and their documented sizes in bytes.
inline const std::vector<CipherSizes>& getRegisteredCiphers() {
    static const std::vector<CipherSizes> ciphers = {
        {"aes256cbc", 32, 16, 16}, {"aes128cbc", 16, 16, 16}, {"bfcbc", 16, 8, 8}, {"cast128cbc", 16, 8, 8}};
    return ciphers;
}

#ifdef OPENSSL_NO_IDEA
constexpr bool hasIDEA = false;
#else
constexpr bool hasIDEA = true;
#endif

/// The identifiers of all ciphers that this libcrypto has, "null" and "ideacbc" included.
inline std::vector<std::string> getCipherIDs() {
    std::vector<std::string> ids = {"null"};
    for (const CipherSizes& sizes : getRegisteredCiphers())
        ids.push_back(sizes.id);
    if (hasIDEA)
        ids.push_back("ideacbc");
    return ids;
}

/// The cipher called `id`, "ideacbc" included.
inline ul::P<sarn::ICipher> getAnyCipher(const std::string& id) {
    if (id == "ideacbc")
        return ul::make<sarn::CCipher_IDEACBC>();
    return sarn::CCipherManager::get()->getCipher(id.c_str());
}

/// A key that is a pattern, or any bytes.
class TestKey : public ul::TCryptBuffer<unsigned char> {
public:
    explicit TestKey(const Bytes& bytes) { fill(*this, bytes); }
    explicit TestKey(int size) : TestKey(makePattern(size)) {}
};

/// One of the four operations, which have the same parameters.
struct CipherOperation {
    const char* name;
    void (sarn::ICipher::*function)(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size, Buffer& out,
                                    bool append, const unsigned char* iv);
};
inline constexpr CipherOperation encrypting{"encrypt", &sarn::ICipher::encrypt};
inline constexpr CipherOperation decrypting{"decrypt", &sarn::ICipher::decrypt};
inline constexpr CipherOperation encryptingUnpadded{"encryptWithoutPadding", &sarn::ICipher::encryptWithoutPadding};
inline constexpr CipherOperation decryptingUnpadded{"decryptWithoutPadding", &sarn::ICipher::decryptWithoutPadding};
inline constexpr CipherOperation cipherOperations[] = {encrypting, decrypting, encryptingUnpadded, decryptingUnpadded};

/// A buffer whose content shows whether an operation has changed it.
struct FilledBuffer : Buffer {
    FilledBuffer() { fill(*this, {9, 8, 7}); }
    bool isUntouched() const { return toBytes(*this) == Bytes{9, 8, 7}; }
};

/// The result of one operation under a `TestKey`.
inline Bytes runCipher(sarn::ICipher& cipher, const CipherOperation& operation, const Bytes& data,
                       const unsigned char* iv) {
    const TestKey key(cipher.getKeySize());
    Buffer out;
    (cipher.*operation.function)(key, data.data(), static_cast<int>(data.size()), out, false, iv);
    return toBytes(out);
}

/// Encrypts and decrypts 100 bytes under a random IV.
inline bool restoresItsInput(sarn::ICipher& cipher) {
    const Bytes encrypted = runCipher(cipher, encrypting, makePattern(100), nullptr);
    return runCipher(cipher, decrypting, encrypted, nullptr) == makePattern(100);
}

// AES-256 under a key and an IV that tests share.
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
