// SPDX-License-Identifier: Apache-2.0
// The low-level digests are deprecated in newer versions of libcrypto.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "failures/imported_calls.h"

#include "failures/replacement.h"
#include "failures/system_calls.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/dsa.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/md4.h>
#include <openssl/md5.h>
#include <openssl/pem.h>
#include <openssl/sha.h>
#if OPENSSL_VERSION_NUMBER >= 0x30000000L
#include <openssl/provider.h>
#endif

#include <cstdlib>
#include <cstring>
#include <set>

#include <sys/mman.h>
#include <sys/stat.h>

namespace sarn_test {

namespace {

/// A failed flush of a file must be reported. When the folder is flushed, the file already has its name.
int flush(int file) {
    struct stat status {};
    const bool isFolder = ::fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
    return isFolder ? Replacement<&flushFolder>::call(file) : Replacement<&flushFile>::call(file);
}

} // namespace

// Each row is a function: its kind, its name, the result and errno of its failure, and its traits.
// clang-format off
const std::vector<ImportedCall>& getImportedCalls() {
    constexpr CallKind libcrypto = CallKind::Libcrypto;
    constexpr CallKind file = CallKind::File;
    constexpr CallKind allocation = CallKind::Allocation;
    constexpr CallKind memory = CallKind::Memory;
    constexpr CallKind lock = CallKind::Lock;
    // Never destroyed: the destructors of static objects still free memory through it.
    static const std::vector<ImportedCall>& table = *new std::vector<ImportedCall>{
        describe<&::BIO_ctrl>(libcrypto, "BIO_ctrl", 0),
        describe<&::BIO_new>(libcrypto, "BIO_new", 0),
        describe<&::BIO_new_mem_buf>(libcrypto, "BIO_new_mem_buf", 0),
        describe<&::BIO_read>(libcrypto, "BIO_read", -1),
        describe<&::BIO_write>(libcrypto, "BIO_write", -1),
        describe<&::BIO_free_all>(libcrypto, "BIO_free_all", 0, 0, cannot),
        // It fails for an empty queue too.
        describe<&::ERR_set_mark>(libcrypto, "ERR_set_mark", 0, 0, ignored),
        // Without a mark it drops all errors.
        describe<&::ERR_pop_to_mark>(libcrypto, "ERR_pop_to_mark", 0, 0, ignored | done),
        // What follows fails too, for lack of memory.
        describe<&::OPENSSL_init_crypto>(libcrypto, "OPENSSL_init_crypto", 0, 0, ignored),
        describe<&::EVP_CIPHER_CTX_new>(libcrypto, "EVP_CIPHER_CTX_new", 0),
        // A new context needs no reset.
        describe<&::EVP_CIPHER_CTX_reset>(libcrypto, "EVP_CIPHER_CTX_reset", 0, 0, ignored),
        describe<&::EVP_CIPHER_CTX_set_padding>(libcrypto, "EVP_CIPHER_CTX_set_padding", 0),
        describe<&::EVP_CIPHER_CTX_free>(libcrypto, "EVP_CIPHER_CTX_free", 0, 0, cannot),
        describe<&::EVP_EncryptInit>(libcrypto, "EVP_EncryptInit", 0),
        describe<&::EVP_EncryptUpdate>(libcrypto, "EVP_EncryptUpdate", 0),
        describe<&::EVP_EncryptFinal>(libcrypto, "EVP_EncryptFinal", 0),
        describe<&::EVP_DecryptInit>(libcrypto, "EVP_DecryptInit", 0),
        describe<&::EVP_DecryptUpdate>(libcrypto, "EVP_DecryptUpdate", 0),
        describe<&::EVP_DecryptFinal>(libcrypto, "EVP_DecryptFinal", 0),
        describe<&::EVP_MD_CTX_new>(libcrypto, "EVP_MD_CTX_new", 0),
        // It is called only before the context is freed, or before an error is raised.
        describe<&::EVP_MD_CTX_reset>(libcrypto, "EVP_MD_CTX_reset", 0, 0, ignored),
        describe<&::EVP_MD_CTX_free>(libcrypto, "EVP_MD_CTX_free", 0, 0, cannot),
        describe<&::EVP_DigestInit>(libcrypto, "EVP_DigestInit", 0),
        describe<&::EVP_DigestUpdate>(libcrypto, "EVP_DigestUpdate", 0),
        describe<&::EVP_SignFinal>(libcrypto, "EVP_SignFinal", 0),
        describe<&::EVP_VerifyFinal>(libcrypto, "EVP_VerifyFinal", -1),
        describe<&::EVP_PKEY_free>(libcrypto, "EVP_PKEY_free", 0, 0, cannot),
        describe<&::PKCS5_PBKDF2_HMAC_SHA1>(libcrypto, "PKCS5_PBKDF2_HMAC_SHA1", 0),
        describe<&::PEM_read_bio_PrivateKey>(libcrypto, "PEM_read_bio_PrivateKey", 0),
        describe<&::PEM_read_bio_PUBKEY>(libcrypto, "PEM_read_bio_PUBKEY", 0),
        describe<&::MD4_Init>(libcrypto, "MD4_Init", 0),
        describe<&::MD4_Update>(libcrypto, "MD4_Update", 0),
        describe<&::MD4_Final>(libcrypto, "MD4_Final", 0),
        describe<&::MD5_Init>(libcrypto, "MD5_Init", 0),
        describe<&::MD5_Update>(libcrypto, "MD5_Update", 0),
        describe<&::MD5_Final>(libcrypto, "MD5_Final", 0),
        describe<&::SHA1_Init>(libcrypto, "SHA1_Init", 0),
        describe<&::SHA1_Update>(libcrypto, "SHA1_Update", 0),
        describe<&::SHA1_Final>(libcrypto, "SHA1_Final", 0),
        describe<&::SHA256_Init>(libcrypto, "SHA256_Init", 0),
        describe<&::SHA256_Update>(libcrypto, "SHA256_Update", 0),
        describe<&::SHA256_Final>(libcrypto, "SHA256_Final", 0),
#if OPENSSL_VERSION_NUMBER >= 0x30000000L
        // The library then uses the cipher of the host's providers.
        describe<&::OSSL_LIB_CTX_new>(libcrypto, "OSSL_LIB_CTX_new", 0, 0, ignored),
        describe<&::OSSL_PROVIDER_load>(libcrypto, "OSSL_PROVIDER_load", 0, 0, ignored),
        describe<&::OSSL_PROVIDER_available>(libcrypto, "OSSL_PROVIDER_available", 0, 0, ignored),
        describe<&::EVP_CIPHER_fetch>(libcrypto, "EVP_CIPHER_fetch", 0, 0, ignored),
        describe<&::HMAC_CTX_new>(libcrypto, "HMAC_CTX_new", 0),
        describe<&::HMAC_Init_ex>(libcrypto, "HMAC_Init_ex", 0),
        describe<&::HMAC_Update>(libcrypto, "HMAC_Update", 0),
        describe<&::HMAC_Final>(libcrypto, "HMAC_Final", 0),
        describe<&::HMAC_CTX_free>(libcrypto, "HMAC_CTX_free", 0, 0, cannot),
#else
        // Then the queue is emptied in the end.
        describe<&::ERR_get_state>(libcrypto, "ERR_get_state", 0, 0, ignored),
        describe<&::EVP_idea_cbc>(libcrypto, "EVP_idea_cbc", 0),
        describe<&::HMAC>(libcrypto, "HMAC", 0),
        // The library then does not know that the key is one for DSA.
        describe<&::EVP_PKEY_base_id>(libcrypto, "EVP_PKEY_base_id", 0, 0, ignored),
        describe<&::BN_mod_exp_mont>(libcrypto, "BN_mod_exp_mont", 0),
        describe<&::DSA_meth_dup>(libcrypto, "DSA_meth_dup", 0),
#endif
        describe<&openFile>(file, "open", -1, EMFILE),
        describe<&readPiece>(file, "read", -1, EIO),
        describe<&writePiece>(file, "write", -1, ENOSPC),
        describe<&::fstat>(file, "fstat", -1, EIO),
        describe<&::fstatat>(file, "fstatat", -1, EACCES),
        describe<&::faccessat>(file, "faccessat", -1, EROFS),
        describe<&openFileAt>(file, "openat", -1, ENFILE),
        describe<&setFileFlags>(file, "fcntl", -1, EPERM),
        describe<&flushFile>(file, "fsync", -1, EIO),
        describe<&flushFolder>(file, "fsync of a folder", -1, EIO, ignored),
        describe<&::fchmod>(file, "fchmod", -1, EPERM),
        describe<&::renameat>(file, "renameat", -1, EXDEV),
        describe<&::getcwd>(file, "getcwd", 0, ENOENT),
        describe<&drawPiece>(file, "getrandom", -1, EIO),
        // The bytes are synced before. The system closes the descriptor even if it reports an error.
        describe<&::close>(file, "close", -1, EIO, done | ignored),
        // The library reports the error that led to the removal.
        describe<&::unlinkat>(file, "unlinkat", -1, EACCES, ignored),
        // Without this page no random bytes are drawn in advance. The last advice keeps them out of core files.
        describe<&::mmap>(file, "mmap", -1, ENOMEM, ignored),
        describe<&::madvise>(file, "madvise", -1, EINVAL, ignored),
        // The page is wiped before.
        describe<&::munmap>(file, "munmap", -1, EINVAL, ignored),
        describe<&std::malloc>(allocation, "malloc", 0),
        describe<&std::calloc>(allocation, "calloc", 0),
        describe<&std::realloc>(allocation, "realloc", 0),
        describe<New{&::operator new}>(allocation, "_Znwm", 0, 0, throws),
        describe<New{&::operator new[]}>(allocation, "_Znam", 0, 0, throws),
        describe<&newMemoryOrNull>(allocation, "_ZnwmRKSt9nothrow_t", 0),
        describe<&std::free>(memory, "free", 0, 0, cannot),
        describe<Delete{&::operator delete}>(memory, "_ZdlPv", 0, 0, cannot),
        describe<SizedDelete{&::operator delete}>(memory, "_ZdlPvm", 0, 0, cannot),
        describe<Delete{&::operator delete[]}>(memory, "_ZdaPv", 0, 0, cannot),
        describe<&::memcpy>(memory, "memcpy", 0, 0, cannot),
        describe<&beginLock>(lock, "_ZN2ul10CMutexLockC1EPNS_6IMutexE", 0, 0, cannot),
        describe<&endLock>(lock, "_ZN2ul10CMutexLockD1Ev", 0, 0, cannot),
    };
    return table;
}
// clang-format on

namespace {

std::vector<std::string> replaceAll() {
    std::map<std::string_view, void*> replacements;
    for (const ImportedCall& call : getImportedCalls()) {
        *call.slot = &call;
        replacements[call.name] = call.replacement;
    }
    replacements["fsync"] = reinterpret_cast<void*>(&flush);
    // Clang's address sanitizer checks the memory first.
    replacements["__asan_memcpy"] = replacements.at("memcpy");
    // Clang calls the variants that bases would use.
    replacements["_ZN2ul10CMutexLockC2EPNS_6IMutexE"] = replacements.at("_ZN2ul10CMutexLockC1EPNS_6IMutexE");
    replacements["_ZN2ul10CMutexLockD2Ev"] = replacements.at("_ZN2ul10CMutexLockD1Ev");
    std::vector<std::string> names;
    for (const char* const library : {"libul.", "libsarn."}) {
        visitImports(library, [&](const char* name, void** address) {
            names.emplace_back(name);
            if (const auto found = replacements.find(name); found != replacements.end())
                *address = found->second;
        });
    }
    const auto replaceSome = [&](const char* library, const std::set<std::string_view>& some) {
        visitImports(library, [&](const char* name, void** address) {
            if (some.count(name) > 0)
                *address = replacements.at(name);
        });
    };
    replaceSome("libcrypto.", {"malloc", "calloc", "realloc"});
    replaceSome("libz.", {"malloc", "calloc", "realloc"});
#ifdef _LIBCPP_VERSION
    constexpr char runtime[] = "libc++.";
#else
    constexpr char runtime[] = "libstdc++.";
#endif
    // Its operator new is replaced in its callers, and the text of an error needs malloc().
    replaceSome(runtime, {"_Znwm", "getcwd"});
    return names;
}

// Imported functions that no test makes fail.
// They return nothing, a constant, their argument, something that exists already, or a number of which every value is a
// result. The last ones belong to the runtime. Spaces separate the names.
constexpr std::string_view alwaysSucceeding =
    " BIO_f_base64 BIO_s_mem BIO_push BIO_set_flags EVP_aes_128_cbc EVP_aes_256_cbc EVP_bf_cbc EVP_cast5_cbc "
    "EVP_md5 EVP_sha1 EVP_CIPHER_flags EVP_CIPHER_get_flags EVP_CIPHER_get_mode EVP_CIPHER_block_size "
    "EVP_CIPHER_iv_length EVP_CIPHER_key_length EVP_CIPHER_get_block_size EVP_CIPHER_get_iv_length "
    "EVP_CIPHER_get_key_length EVP_PKEY_size EVP_PKEY_get_size BN_num_bits DSA_OpenSSL DSA_get0_pqg DSA_get_method "
    "DSA_set_method DSA_meth_get_sign DSA_meth_set_sign DSA_meth_set_bn_mod_exp EVP_PKEY_get0_DSA "
    "ERR_peek_error ERR_clear_error OpenSSL_version OpenSSL_version_num adler32 crc32 "
    "memmove memset memcmp memchr strcmp strlen wcslen wmemcmp wmemcpy wmemset wmemchr fprintf "
    "pthread_mutex_lock pthread_mutex_trylock pthread_mutex_unlock pthread_self "
    "__tls_get_addr __assert_fail __errno_location __getauxval __dynamic_cast __gmon_start__ ";

// Mangled names belong to libul and the C++ runtime. The functions that allocate are in the table of calls that fail.
constexpr const char* runtimePrefixes[] = {"_Z",     "__cxa_",  "_ITM_",    "_Unwind_",
                                           "__gxx_", "__asan_", "__ubsan_", "__tsan_"};

} // namespace

const std::vector<std::string>& installReplacements() {
    static const std::vector<std::string> names = replaceAll();
    return names;
}

bool cannotFail(const std::string& name) {
    for (const char* const prefix : runtimePrefixes) {
        if (name.rfind(prefix, 0) == 0)
            return true;
    }
    return alwaysSucceeding.find(" " + name + " ") != std::string_view::npos;
}

} // namespace sarn_test
