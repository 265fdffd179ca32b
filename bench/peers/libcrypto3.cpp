// SPDX-License-Identifier: Apache-2.0
// The system's libcrypto 3, loaded by dlopen because the program is linked with another version. The functions have the
// same types in both.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "peers/peer.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/md4.h>
#include <openssl/md5.h>
#include <openssl/pem.h>
#include <openssl/sha.h>

#include <dlfcn.h>

namespace bench {

namespace {

/// A function of the library, or null if it has none of that name.
template <class Function>
class Imported {
public:
    Imported(void* library, const char* name) : m_function(reinterpret_cast<Function*>(dlsym(library, name))) {}
    template <class... Arguments>
    auto operator()(Arguments... arguments) const {
        return m_function(arguments...);
    }

private:
    Function* m_function;
};

#define BENCH_IMPORT(name)                                                                                             \
    Imported<decltype(::name)> name {                                                                                  \
        library, #name                                                                                                 \
    }

struct Functions {
    explicit Functions(void* handle) : library(handle) {}

    void* library;
    BENCH_IMPORT(EVP_aes_256_cbc);
    BENCH_IMPORT(EVP_aes_128_cbc);
    BENCH_IMPORT(EVP_CIPHER_CTX_new);
    BENCH_IMPORT(EVP_CIPHER_CTX_free);
    BENCH_IMPORT(EVP_CIPHER_CTX_set_padding);
    BENCH_IMPORT(EVP_CipherInit_ex);
    BENCH_IMPORT(EVP_CipherUpdate);
    BENCH_IMPORT(EVP_CipherFinal_ex);
    BENCH_IMPORT(EVP_sha1);
    BENCH_IMPORT(MD4);
    BENCH_IMPORT(MD5);
    BENCH_IMPORT(SHA1);
    BENCH_IMPORT(SHA256);
    BENCH_IMPORT(HMAC);
    BENCH_IMPORT(PKCS5_PBKDF2_HMAC_SHA1);
    BENCH_IMPORT(BIO_new_mem_buf);
    BENCH_IMPORT(BIO_free);
    BENCH_IMPORT(PEM_read_bio_PrivateKey);
    BENCH_IMPORT(PEM_read_bio_PUBKEY);
    BENCH_IMPORT(EVP_PKEY_free);
    BENCH_IMPORT(EVP_MD_CTX_new);
    BENCH_IMPORT(EVP_MD_CTX_free);
    BENCH_IMPORT(EVP_DigestInit);
    BENCH_IMPORT(EVP_DigestUpdate);
    BENCH_IMPORT(EVP_SignFinal);
    BENCH_IMPORT(EVP_VerifyFinal);
};

#undef BENCH_IMPORT

class Libcrypto3Peer : public Peer {
public:
    explicit Libcrypto3Peer(void* library) : m_functions(std::make_shared<Functions>(library)) {}

    const char* getName() const override { return "libcrypto3"; }

    Work cipher(const CipherTask& task, const Result& result) const override {
        if (task.id != "aes256cbc" && task.id != "aes128cbc")
            return {};
        const EVP_CIPHER* const cipher =
            task.id == "aes256cbc" ? m_functions->EVP_aes_256_cbc() : m_functions->EVP_aes_128_cbc();
        return [=, f = m_functions] {
            EVP_CIPHER_CTX* const context = f->EVP_CIPHER_CTX_new();
            f->EVP_CipherInit_ex(context, cipher, nullptr, task.key.data(), task.iv.data(), task.isEncrypting);
            f->EVP_CIPHER_CTX_set_padding(context, 0);
            int first = 0;
            int last = 0;
            f->EVP_CipherUpdate(context, result->data(), &first, task.input.data(),
                                static_cast<int>(task.input.size()));
            f->EVP_CipherFinal_ex(context, result->data() + first, &last);
            f->EVP_CIPHER_CTX_free(context);
        };
    }

    Work digest(const std::string& id, const Bytes& data, const Result& result) const override {
        if (id == "md4")
            return [=, f = m_functions] { f->MD4(data.data(), data.size(), result->data()); };
        if (id == "md5")
            return [=, f = m_functions] { f->MD5(data.data(), data.size(), result->data()); };
        if (id == "sha1")
            return [=, f = m_functions] { f->SHA1(data.data(), data.size(), result->data()); };
        if (id == "sha256")
            return [=, f = m_functions] { f->SHA256(data.data(), data.size(), result->data()); };
        return {};
    }

    Work hmacSHA1(const Bytes& key, const Bytes& data, const Result& result) const override {
        return [=, f = m_functions] {
            unsigned size = 0;
            f->HMAC(f->EVP_sha1(), key.data(), static_cast<int>(key.size()), data.data(), data.size(), result->data(),
                    &size);
        };
    }

    Work deriveKey(const std::string& password, const std::string& salt, int iterations,
                   const Result& result) const override {
        return [=, f = m_functions] {
            f->PKCS5_PBKDF2_HMAC_SHA1(
                password.data(), static_cast<int>(password.size()), reinterpret_cast<const unsigned char*>(salt.data()),
                static_cast<int>(salt.size()), iterations, static_cast<int>(result->size()), result->data());
        };
    }

    Work sign(const SignatureTask& task, const Result& result) const override {
        return [=, f = m_functions] {
            BIO* const bio = f->BIO_new_mem_buf(task.privateKey.data(), static_cast<int>(task.privateKey.size()));
            EVP_PKEY* const key = f->PEM_read_bio_PrivateKey(bio, nullptr, nullptr, nullptr);
            f->BIO_free(bio);
            EVP_MD_CTX* const context = digest(*f, task);
            unsigned size = 0;
            result->resize(1024);
            f->EVP_SignFinal(context, result->data(), &size, key);
            result->resize(size);
            f->EVP_MD_CTX_free(context);
            f->EVP_PKEY_free(key);
        };
    }

    Work verify(const SignatureTask& task, const Bytes& signature, const Result& result) const override {
        return [=, f = m_functions] {
            BIO* const bio = f->BIO_new_mem_buf(task.publicKey.data(), static_cast<int>(task.publicKey.size()));
            EVP_PKEY* const key = f->PEM_read_bio_PUBKEY(bio, nullptr, nullptr, nullptr);
            f->BIO_free(bio);
            EVP_MD_CTX* const context = digest(*f, task);
            result->at(0) =
                f->EVP_VerifyFinal(context, signature.data(), static_cast<unsigned>(signature.size()), key) == 1;
            f->EVP_MD_CTX_free(context);
            f->EVP_PKEY_free(key);
        };
    }

private:
    static EVP_MD_CTX* digest(const Functions& f, const SignatureTask& task) {
        EVP_MD_CTX* const context = f.EVP_MD_CTX_new();
        f.EVP_DigestInit(context, f.EVP_sha1());
        f.EVP_DigestUpdate(context, task.data.data(), task.data.size());
        return context;
    }

    std::shared_ptr<Functions> m_functions;
};

} // namespace

std::unique_ptr<Peer> createLibcrypto3() {
    void* const library = dlopen("libcrypto.so.3", RTLD_NOW | RTLD_LOCAL);
    return library ? std::make_unique<Libcrypto3Peer>(library) : nullptr;
}

} // namespace bench
