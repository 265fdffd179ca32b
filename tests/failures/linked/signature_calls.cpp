// SPDX-License-Identifier: Apache-2.0
// Replacements of the calls of the signatures.
#include "failures/linked/libcrypto_faults.h"

#include <openssl/evp.h>
#include <openssl/pem.h>

using sarn_test::LibcryptoFaults;

extern "C" {

EVP_MD_CTX* __real_EVP_MD_CTX_new();
EVP_MD_CTX* __wrap_EVP_MD_CTX_new() {
    return LibcryptoFaults::mustFail("EVP_MD_CTX_new") ? nullptr : __real_EVP_MD_CTX_new();
}

int __real_EVP_MD_CTX_reset(EVP_MD_CTX* context);
int __wrap_EVP_MD_CTX_reset(EVP_MD_CTX* context) {
    LibcryptoFaults::mustFail("EVP_MD_CTX_reset");
    return __real_EVP_MD_CTX_reset(context);
}

void __real_EVP_MD_CTX_free(EVP_MD_CTX* context);
void __wrap_EVP_MD_CTX_free(EVP_MD_CTX* context) {
    LibcryptoFaults::mustFail("EVP_MD_CTX_free");
    __real_EVP_MD_CTX_free(context);
}

int __real_EVP_DigestInit(EVP_MD_CTX* context, const EVP_MD* md);
int __wrap_EVP_DigestInit(EVP_MD_CTX* context, const EVP_MD* md) {
    return LibcryptoFaults::mustFail("EVP_DigestInit") ? 0 : __real_EVP_DigestInit(context, md);
}

int __real_EVP_DigestUpdate(EVP_MD_CTX* context, const void* data, std::size_t size);
int __wrap_EVP_DigestUpdate(EVP_MD_CTX* context, const void* data, std::size_t size) {
    if (size == 8192)
        LibcryptoFaults::mustFail("EVP_DigestUpdate of 8192 bytes");
    return LibcryptoFaults::mustFail("EVP_DigestUpdate") ? 0 : __real_EVP_DigestUpdate(context, data, size);
}

int __real_EVP_SignFinal(EVP_MD_CTX* context, unsigned char* out, unsigned* size, EVP_PKEY* key);
int __wrap_EVP_SignFinal(EVP_MD_CTX* context, unsigned char* out, unsigned* size, EVP_PKEY* key) {
    return LibcryptoFaults::mustFail("EVP_SignFinal") ? 0 : __real_EVP_SignFinal(context, out, size, key);
}

int __real_EVP_VerifyFinal(EVP_MD_CTX* context, const unsigned char* signature, unsigned size, EVP_PKEY* key);
int __wrap_EVP_VerifyFinal(EVP_MD_CTX* context, const unsigned char* signature, unsigned size, EVP_PKEY* key) {
    const int result = LibcryptoFaults::getResult("EVP_VerifyFinal");
    return LibcryptoFaults::mustFail("EVP_VerifyFinal") ? result
                                                        : __real_EVP_VerifyFinal(context, signature, size, key);
}

void __real_EVP_PKEY_free(EVP_PKEY* key);
void __wrap_EVP_PKEY_free(EVP_PKEY* key) {
    LibcryptoFaults::mustFail("EVP_PKEY_free");
    __real_EVP_PKEY_free(key);
}

EVP_PKEY* __real_PEM_read_bio_PrivateKey(BIO* bio, EVP_PKEY** key, pem_password_cb* callback, void* data);
EVP_PKEY* __wrap_PEM_read_bio_PrivateKey(BIO* bio, EVP_PKEY** key, pem_password_cb* callback, void* data) {
    return LibcryptoFaults::mustFail("PEM_read_bio_PrivateKey")
               ? nullptr
               : __real_PEM_read_bio_PrivateKey(bio, key, callback, data);
}

EVP_PKEY* __real_PEM_read_bio_PUBKEY(BIO* bio, EVP_PKEY** key, pem_password_cb* callback, void* data);
EVP_PKEY* __wrap_PEM_read_bio_PUBKEY(BIO* bio, EVP_PKEY** key, pem_password_cb* callback, void* data) {
    return LibcryptoFaults::mustFail("PEM_read_bio_PUBKEY") ? nullptr
                                                            : __real_PEM_read_bio_PUBKEY(bio, key, callback, data);
}

} // extern "C"
