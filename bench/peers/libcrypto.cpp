// SPDX-License-Identifier: Apache-2.0
#define OPENSSL_SUPPRESS_DEPRECATED

#include "base64_filter.h"
#include "peers/peer.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/md4.h>
#include <openssl/md5.h>
#include <openssl/sha.h>

#include <map>

namespace bench {

namespace {

class LibcryptoPeer : public Peer {
public:
    const char* getName() const override { return "libcrypto"; }

    Work cipher(const CipherTask& task, const Result& result) const override {
        const std::map<std::string, const EVP_CIPHER*> ciphers = {{"aes256cbc", EVP_aes_256_cbc()},
                                                                  {"aes128cbc", EVP_aes_128_cbc()},
                                                                  {"bfcbc", EVP_bf_cbc()},
                                                                  {"cast128cbc", EVP_cast5_cbc()},
                                                                  {"ideacbc", EVP_idea_cbc()}};
        return [=, cipher = ciphers.at(task.id)] {
            EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
            EVP_CipherInit_ex(context, cipher, nullptr, task.key.data(), task.iv.data(), task.isEncrypting);
            EVP_CIPHER_CTX_set_padding(context, 0);
            int first = 0;
            int last = 0;
            EVP_CipherUpdate(context, result->data(), &first, task.input.data(), static_cast<int>(task.input.size()));
            EVP_CipherFinal_ex(context, result->data() + first, &last);
            EVP_CIPHER_CTX_free(context);
        };
    }

    Work digest(const std::string& id, const Bytes& data, const Result& result) const override {
        const auto hash = id == "md4" ? MD4 : id == "md5" ? MD5 : id == "sha1" ? SHA1 : SHA256;
        return [=] { hash(data.data(), data.size(), result->data()); };
    }

    Work hmacSHA1(const Bytes& key, const Bytes& data, const Result& result) const override {
        return [=] {
            HMAC(EVP_sha1(), key.data(), static_cast<int>(key.size()), data.data(), data.size(), result->data(),
                 nullptr);
        };
    }

    Work deriveKey(const std::string& password, const std::string& salt, int iterations,
                   const Result& result) const override {
        return [=] {
            PKCS5_PBKDF2_HMAC_SHA1(password.data(), static_cast<int>(password.size()),
                                   reinterpret_cast<const unsigned char*>(salt.data()), static_cast<int>(salt.size()),
                                   iterations, static_cast<int>(result->size()), result->data());
        };
    }

    Work encodeBase64(const Bytes& data, const Result& result) const override {
        return [=] {
            BIO* const sink = BIO_new(BIO_s_mem());
            BIO* const chain = pushFilter(sink);
            BIO_write(chain, data.data(), static_cast<int>(data.size()));
            BIO_flush(chain);
            BIO_read(sink, result->data(), static_cast<int>(result->size()));
            BIO_free_all(chain);
        };
    }

    Work decodeBase64(const std::string& text, const Result& result) const override {
        return [=] {
            BIO* const chain = pushFilter(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
            BIO_read(chain, result->data(), static_cast<int>(result->size()));
            BIO_free_all(chain);
        };
    }
};

} // namespace

std::unique_ptr<Peer> createLibcrypto() {
    return std::make_unique<LibcryptoPeer>();
}

} // namespace bench
