// SPDX-License-Identifier: Apache-2.0
#include "peers/peer.h"

#include <mbedtls/aes.h>
#include <mbedtls/base64.h>
#include <mbedtls/blowfish.h>
#include <mbedtls/md.h>
#include <mbedtls/md5.h>
#include <mbedtls/pk.h>
#include <mbedtls/pkcs5.h>
#include <mbedtls/sha1.h>
#include <mbedtls/sha256.h>

namespace bench {

namespace {

class MbedTLSPeer : public Peer {
public:
    const char* getName() const override { return "mbedtls"; }

    Work cipher(const CipherTask& task, const Result& result) const override {
        if (task.id != "aes256cbc" && task.id != "aes128cbc")
            return {};
        return [=] {
            mbedtls_aes_context context;
            mbedtls_aes_init(&context);
            const auto setKey = task.isEncrypting ? mbedtls_aes_setkey_enc : mbedtls_aes_setkey_dec;
            setKey(&context, task.key.data(), static_cast<unsigned>(task.key.size() * 8));
            Bytes iv = task.iv;
            mbedtls_aes_crypt_cbc(&context, task.isEncrypting ? MBEDTLS_AES_ENCRYPT : MBEDTLS_AES_DECRYPT,
                                  task.input.size(), iv.data(), task.input.data(), result->data());
            mbedtls_aes_free(&context);
        };
    }

    Work digest(const std::string& id, const Bytes& data, const Result& result) const override {
        if (id == "md5")
            return [=] { mbedtls_md5_ret(data.data(), data.size(), result->data()); };
        if (id == "sha1")
            return [=] { mbedtls_sha1_ret(data.data(), data.size(), result->data()); };
        if (id == "sha256")
            return [=] { mbedtls_sha256_ret(data.data(), data.size(), result->data(), 0); };
        return {};
    }

    Work hmacSHA1(const Bytes& key, const Bytes& data, const Result& result) const override {
        return [=] {
            mbedtls_md_hmac(mbedtls_md_info_from_type(MBEDTLS_MD_SHA1), key.data(), key.size(), data.data(),
                            data.size(), result->data());
        };
    }

    Work deriveKey(const std::string& password, const std::string& salt, int iterations,
                   const Result& result) const override {
        return [=] {
            mbedtls_md_context_t context;
            mbedtls_md_init(&context);
            mbedtls_md_setup(&context, mbedtls_md_info_from_type(MBEDTLS_MD_SHA1), 1);
            mbedtls_pkcs5_pbkdf2_hmac(&context, reinterpret_cast<const unsigned char*>(password.data()),
                                      password.size(), reinterpret_cast<const unsigned char*>(salt.data()), salt.size(),
                                      static_cast<unsigned>(iterations), static_cast<std::uint32_t>(result->size()),
                                      result->data());
            mbedtls_md_free(&context);
        };
    }

    Work encodeBase64(const Bytes& data, const Result& result) const override {
        const auto text = std::make_shared<Bytes>(result->size() + 1); // with a zero at its end
        return [=] {
            std::size_t size = 0;
            mbedtls_base64_encode(text->data(), text->size(), &size, data.data(), data.size());
            std::copy_n(text->data(), size, result->data());
        };
    }

    Work decodeBase64(const std::string& text, const Result& result) const override {
        return [=] {
            std::size_t size = 0;
            mbedtls_base64_decode(result->data(), result->size(), &size,
                                  reinterpret_cast<const unsigned char*>(text.data()), text.size());
        };
    }

    Work sign(const SignatureTask& task, const Result& result) const override {
        if (task.algorithm != "rsa")
            return {};
        return [=] {
            mbedtls_pk_context key;
            mbedtls_pk_init(&key);
            mbedtls_pk_parse_key(&key, toText(task.privateKey), task.privateKey.size() + 1, nullptr, 0);
            unsigned char hash[20];
            mbedtls_sha1_ret(task.data.data(), task.data.size(), hash);
            std::size_t size = 0;
            mbedtls_pk_sign(&key, MBEDTLS_MD_SHA1, hash, sizeof hash, result->data(), &size, nullptr, nullptr);
            mbedtls_pk_free(&key);
        };
    }

    Work verify(const SignatureTask& task, const Bytes& signature, const Result& result) const override {
        if (task.algorithm != "rsa")
            return {};
        return [=] {
            mbedtls_pk_context key;
            mbedtls_pk_init(&key);
            mbedtls_pk_parse_public_key(&key, toText(task.publicKey), task.publicKey.size() + 1);
            unsigned char hash[20];
            mbedtls_sha1_ret(task.data.data(), task.data.size(), hash);
            result->at(0) =
                mbedtls_pk_verify(&key, MBEDTLS_MD_SHA1, hash, sizeof hash, signature.data(), signature.size()) == 0;
            mbedtls_pk_free(&key);
        };
    }

private:
    static const unsigned char* toText(const std::string& text) {
        return reinterpret_cast<const unsigned char*>(text.c_str());
    }
};

} // namespace

std::unique_ptr<Peer> createMbedTLS() {
    return std::make_unique<MbedTLSPeer>();
}

} // namespace bench
