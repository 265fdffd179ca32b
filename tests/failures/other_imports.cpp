// SPDX-License-Identifier: Apache-2.0
// Imported functions that no test lets fail.
#include "failures/imported_calls.h"

#include <algorithm>
#include <iterator>
#include <sstream>

namespace sarn_test {

namespace {

bool isOneOf(const std::string& name, const char* words) {
    std::istringstream text(words);
    const std::istream_iterator<std::string> begin(text);
    return std::find(begin, std::istream_iterator<std::string>(), name) != std::istream_iterator<std::string>();
}

// They return a constant, their argument, what is known to exist, or a number every value of which is a result.
constexpr char alwaysSucceeding[] =
    "BIO_f_base64 BIO_s_mem BIO_push EVP_aes_128_cbc EVP_aes_256_cbc EVP_bf_cbc EVP_cast5_cbc EVP_idea_cbc EVP_md5 "
    "EVP_sha1 EVP_CIPHER_flags EVP_CIPHER_get_flags EVP_CIPHER_get_mode EVP_CIPHER_block_size EVP_CIPHER_iv_length "
    "EVP_CIPHER_key_length "
    "EVP_CIPHER_get_block_size "
    "EVP_CIPHER_get_iv_length EVP_CIPHER_get_key_length EVP_PKEY_size EVP_PKEY_get_size BN_num_bits DSA_OpenSSL "
    "DSA_get0_pqg DSA_get_method DSA_set_method DSA_meth_get_sign DSA_meth_set_sign DSA_meth_set_bn_mod_exp "
    "EVP_PKEY_get0_DSA ERR_get_state ERR_peek_error OPENSSL_init_crypto OpenSSL_version OpenSSL_version_num adler32 "
    "crc32 geteuid";

constexpr char returningNothing[] = "BIO_set_flags ERR_clear_error";

constexpr char ofTheRuntime[] =
    "memmove memset memcmp memchr strcmp strlen wcslen wmemcmp wmemcpy wmemset wmemchr fprintf nanosleep "
    "pthread_mutex_lock pthread_mutex_trylock pthread_mutex_unlock pthread_self "
    "__tls_get_addr __assert_fail __errno_location __dynamic_cast __gmon_start__";

} // namespace

bool cannotFail(const std::string& name) {
    return isOneOf(name, alwaysSucceeding) || isOneOf(name, returningNothing);
}

bool isNoDependency(const std::string& name) {
    const auto startsWith = [&](const char* start) { return name.rfind(start, 0) == 0; };
    // Mangled names are those of libul and of the C++ runtime, of which those that allocate are among the calls that
    // fail.
    return startsWith("_Z") || startsWith("__cxa_") || startsWith("_ITM_") || startsWith("_Unwind_") ||
           startsWith("__gxx_") || startsWith("__asan_") || startsWith("__ubsan_") || startsWith("__tsan_") ||
           isOneOf(name, ofTheRuntime);
}

} // namespace sarn_test
