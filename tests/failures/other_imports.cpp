// SPDX-License-Identifier: Apache-2.0
// Imported functions that no test makes fail.
#include "failures/imported_calls.h"

#include <cstring>
#include <string_view>

namespace sarn_test {

namespace {

// They return nothing, a constant, their argument, something that exists already, or a number of which every value is a
// result. The last ones belong to the runtime. Spaces separate the names.
constexpr std::string_view alwaysSucceeding =
    " BIO_f_base64 BIO_s_mem BIO_push BIO_set_flags EVP_aes_128_cbc EVP_aes_256_cbc EVP_bf_cbc EVP_cast5_cbc "
    "EVP_idea_cbc EVP_md5 EVP_sha1 EVP_CIPHER_flags EVP_CIPHER_get_flags EVP_CIPHER_get_mode EVP_CIPHER_block_size "
    "EVP_CIPHER_iv_length EVP_CIPHER_key_length EVP_CIPHER_get_block_size EVP_CIPHER_get_iv_length "
    "EVP_CIPHER_get_key_length EVP_PKEY_size EVP_PKEY_get_size BN_num_bits DSA_OpenSSL DSA_get0_pqg DSA_get_method "
    "DSA_set_method DSA_meth_get_sign DSA_meth_set_sign DSA_meth_set_bn_mod_exp EVP_PKEY_get0_DSA ERR_get_state "
    "ERR_peek_error ERR_clear_error OPENSSL_init_crypto OpenSSL_version OpenSSL_version_num adler32 crc32 geteuid "
    "memmove memset memcmp memchr strcmp strlen wcslen wmemcmp wmemcpy wmemset wmemchr fprintf nanosleep "
    "pthread_mutex_lock pthread_mutex_trylock pthread_mutex_unlock pthread_self "
    "__tls_get_addr __assert_fail __errno_location __getauxval __dynamic_cast __gmon_start__ ";

// Mangled names belong to libul and the C++ runtime. The functions that allocate are in the table of calls that fail.
constexpr const char* runtimePrefixes[] = {"_Z",     "__cxa_",  "_ITM_",    "_Unwind_",
                                           "__gxx_", "__asan_", "__ubsan_", "__tsan_"};

} // namespace

bool cannotFail(const std::string& name) {
    for (const char* const prefix : runtimePrefixes) {
        if (name.rfind(prefix, 0) == 0)
            return true;
    }
    return alwaysSucceeding.find(" " + name + " ") != std::string_view::npos;
}

} // namespace sarn_test
