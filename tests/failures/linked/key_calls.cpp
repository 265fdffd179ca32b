// SPDX-License-Identifier: Apache-2.0
// Replacements of the calls of the encodings and keys.
#include "failures/linked/libcrypto_faults.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

using sarn_test::LibcryptoFaults;

extern "C" {

BIO* __real_BIO_new(const BIO_METHOD* method);
BIO* __wrap_BIO_new(const BIO_METHOD* method) {
    return LibcryptoFaults::mustFail("BIO_new") ? nullptr : __real_BIO_new(method);
}

BIO* __real_BIO_new_mem_buf(const void* data, int size);
BIO* __wrap_BIO_new_mem_buf(const void* data, int size) {
    return LibcryptoFaults::mustFail("BIO_new_mem_buf") ? nullptr : __real_BIO_new_mem_buf(data, size);
}

int __real_BIO_write(BIO* chain, const void* data, int size);
int __wrap_BIO_write(BIO* chain, const void* data, int size) {
    return LibcryptoFaults::mustFail("BIO_write") ? -1 : __real_BIO_write(chain, data, size);
}

int __real_BIO_read(BIO* chain, void* data, int size);
int __wrap_BIO_read(BIO* chain, void* data, int size) {
    return LibcryptoFaults::mustFail("BIO_read") ? -1 : __real_BIO_read(chain, data, size);
}

long __real_BIO_ctrl(BIO* chain, int command, long number, void* pointer);
long __wrap_BIO_ctrl(BIO* chain, int command, long number, void* pointer) {
    return LibcryptoFaults::mustFail("BIO_ctrl") ? 0 : __real_BIO_ctrl(chain, command, number, pointer);
}

void __real_BIO_free_all(BIO* chain);
void __wrap_BIO_free_all(BIO* chain) {
    LibcryptoFaults::mustFail("BIO_free_all");
    __real_BIO_free_all(chain);
}

unsigned char* __real_HMAC(const EVP_MD* md, const void* key, int keySize, const unsigned char* data, std::size_t size,
                           unsigned char* out, unsigned* length);
unsigned char* __wrap_HMAC(const EVP_MD* md, const void* key, int keySize, const unsigned char* data, std::size_t size,
                           unsigned char* out, unsigned* length) {
    if (!key)
        LibcryptoFaults::mustFail("HMAC with a null key");
    return LibcryptoFaults::mustFail("HMAC") ? nullptr : __real_HMAC(md, key, keySize, data, size, out, length);
}

int __real_PKCS5_PBKDF2_HMAC_SHA1(const char* password, int passwordSize, const unsigned char* salt, int saltSize,
                                  int iterations, int keySize, unsigned char* key);
int __wrap_PKCS5_PBKDF2_HMAC_SHA1(const char* password, int passwordSize, const unsigned char* salt, int saltSize,
                                  int iterations, int keySize, unsigned char* key) {
    if (!password)
        LibcryptoFaults::mustFail("PKCS5_PBKDF2_HMAC_SHA1 with a null password");
    return LibcryptoFaults::mustFail("PKCS5_PBKDF2_HMAC_SHA1")
               ? 0
               : __real_PKCS5_PBKDF2_HMAC_SHA1(password, passwordSize, salt, saltSize, iterations, keySize, key);
}

} // extern "C"
