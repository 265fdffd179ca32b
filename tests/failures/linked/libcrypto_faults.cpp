// SPDX-License-Identifier: Apache-2.0
// The hashes' own functions are what the library calls, although newer versions declare them deprecated.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "failures/linked/libcrypto_faults.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/md5.h>

#include <algorithm>

namespace sarn_test {

namespace {

LibcryptoFaults* g_active = nullptr;

/// The number under a name, 0 if there is none.
int find(const std::map<std::string, int, std::less<>>& numbers, const char* name) {
    const auto found = numbers.find(name);
    return found == numbers.end() ? 0 : found->second;
}

} // namespace

LibcryptoFaults::LibcryptoFaults() {
    g_active = this;
}

LibcryptoFaults::~LibcryptoFaults() {
    g_active = nullptr;
}

void LibcryptoFaults::failCall(const std::string& name, int index) {
    m_failing[name] = getCallCount(name) + index;
}

void LibcryptoFaults::shortenOutput(const std::string& name, int count) {
    m_shortening[name] = count;
}

int LibcryptoFaults::getCallCount(std::string_view name) const {
    return static_cast<int>(std::count(m_calls.begin(), m_calls.begin() + m_callCount, name));
}

bool LibcryptoFaults::mustFail(const char* name) {
    if (!g_active)
        return false;
    const int index = g_active->getCallCount(name);
    g_active->m_calls.at(static_cast<std::size_t>(g_active->m_callCount++)) = name;
    const auto failing = g_active->m_failing.find(name);
    if (failing == g_active->m_failing.end() || failing->second != index)
        return false;
    ERR_put_error(ERR_LIB_USER, 0, 1, __FILE__, __LINE__);
    return true;
}

int LibcryptoFaults::getShortening(const char* name) {
    return g_active ? find(g_active->m_shortening, name) : 0;
}

void LibcryptoFaults::setResult(const std::string& name, int result) {
    m_results[name] = result;
}

int LibcryptoFaults::getResult(const char* name) {
    return g_active ? find(g_active->m_results, name) : 0;
}

} // namespace sarn_test

// The linker sends each call of NAME to __wrap_NAME, and each of __real_NAME to libcrypto's NAME.
extern "C" {

EVP_CIPHER_CTX* __real_EVP_CIPHER_CTX_new();
EVP_CIPHER_CTX* __wrap_EVP_CIPHER_CTX_new() {
    return sarn_test::LibcryptoFaults::mustFail("EVP_CIPHER_CTX_new") ? nullptr : __real_EVP_CIPHER_CTX_new();
}

void __real_EVP_CIPHER_CTX_free(EVP_CIPHER_CTX* context);
void __wrap_EVP_CIPHER_CTX_free(EVP_CIPHER_CTX* context) {
    sarn_test::LibcryptoFaults::mustFail("EVP_CIPHER_CTX_free");
    __real_EVP_CIPHER_CTX_free(context);
}

int __real_EVP_CIPHER_CTX_reset(EVP_CIPHER_CTX* context);
int __wrap_EVP_CIPHER_CTX_reset(EVP_CIPHER_CTX* context) {
    return sarn_test::LibcryptoFaults::mustFail("EVP_CIPHER_CTX_reset") ? 0 : __real_EVP_CIPHER_CTX_reset(context);
}

int __real_EVP_CIPHER_CTX_set_padding(EVP_CIPHER_CTX* context, int padding);
int __wrap_EVP_CIPHER_CTX_set_padding(EVP_CIPHER_CTX* context, int padding) {
    return sarn_test::LibcryptoFaults::mustFail("EVP_CIPHER_CTX_set_padding")
               ? 0
               : __real_EVP_CIPHER_CTX_set_padding(context, padding);
}

int __real_EVP_EncryptInit(EVP_CIPHER_CTX* context, const EVP_CIPHER* cipher, const unsigned char* key,
                           const unsigned char* iv);
int __wrap_EVP_EncryptInit(EVP_CIPHER_CTX* context, const EVP_CIPHER* cipher, const unsigned char* key,
                           const unsigned char* iv) {
    return sarn_test::LibcryptoFaults::mustFail("EVP_EncryptInit") ? 0
                                                                   : __real_EVP_EncryptInit(context, cipher, key, iv);
}

int __real_EVP_DecryptInit(EVP_CIPHER_CTX* context, const EVP_CIPHER* cipher, const unsigned char* key,
                           const unsigned char* iv);
int __wrap_EVP_DecryptInit(EVP_CIPHER_CTX* context, const EVP_CIPHER* cipher, const unsigned char* key,
                           const unsigned char* iv) {
    return sarn_test::LibcryptoFaults::mustFail("EVP_DecryptInit") ? 0
                                                                   : __real_EVP_DecryptInit(context, cipher, key, iv);
}

int __real_EVP_EncryptUpdate(EVP_CIPHER_CTX* context, unsigned char* out, int* written, const unsigned char* in,
                             int size);
int __wrap_EVP_EncryptUpdate(EVP_CIPHER_CTX* context, unsigned char* out, int* written, const unsigned char* in,
                             int size) {
    return sarn_test::LibcryptoFaults::mustFail("EVP_EncryptUpdate")
               ? 0
               : __real_EVP_EncryptUpdate(context, out, written, in, size);
}

int __real_EVP_DecryptUpdate(EVP_CIPHER_CTX* context, unsigned char* out, int* written, const unsigned char* in,
                             int size);
int __wrap_EVP_DecryptUpdate(EVP_CIPHER_CTX* context, unsigned char* out, int* written, const unsigned char* in,
                             int size) {
    if (!in)
        sarn_test::LibcryptoFaults::mustFail("EVP_DecryptUpdate of a null pointer");
    return sarn_test::LibcryptoFaults::mustFail("EVP_DecryptUpdate")
               ? 0
               : __real_EVP_DecryptUpdate(context, out, written, in, size);
}

int __real_EVP_EncryptFinal(EVP_CIPHER_CTX* context, unsigned char* out, int* written);
int __wrap_EVP_EncryptFinal(EVP_CIPHER_CTX* context, unsigned char* out, int* written) {
    if (sarn_test::LibcryptoFaults::mustFail("EVP_EncryptFinal"))
        return 0;
    const int result = __real_EVP_EncryptFinal(context, out, written);
    *written -= sarn_test::LibcryptoFaults::getShortening("EVP_EncryptFinal");
    return result;
}

int __real_EVP_DecryptFinal(EVP_CIPHER_CTX* context, unsigned char* out, int* written);
int __wrap_EVP_DecryptFinal(EVP_CIPHER_CTX* context, unsigned char* out, int* written) {
    if (sarn_test::LibcryptoFaults::mustFail("EVP_DecryptFinal"))
        return 0;
    const int result = __real_EVP_DecryptFinal(context, out, written);
    *written -= sarn_test::LibcryptoFaults::getShortening("EVP_DecryptFinal");
    return result;
}

int __real_MD5_Init(MD5_CTX* context);
int __wrap_MD5_Init(MD5_CTX* context) {
    return sarn_test::LibcryptoFaults::mustFail("MD5_Init") ? 0 : __real_MD5_Init(context);
}

int __real_MD5_Update(MD5_CTX* context, const void* data, std::size_t size);
int __wrap_MD5_Update(MD5_CTX* context, const void* data, std::size_t size) {
    return sarn_test::LibcryptoFaults::mustFail("MD5_Update") ? 0 : __real_MD5_Update(context, data, size);
}

int __real_MD5_Final(unsigned char* out, MD5_CTX* context);
int __wrap_MD5_Final(unsigned char* out, MD5_CTX* context) {
    return sarn_test::LibcryptoFaults::mustFail("MD5_Final") ? 0 : __real_MD5_Final(out, context);
}

} // extern "C"
