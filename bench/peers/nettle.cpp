// SPDX-License-Identifier: Apache-2.0
#include "peers/peer.h"

#include <nettle/aes.h>
#include <nettle/base64.h>
#include <nettle/blowfish.h>
#include <nettle/cast128.h>
#include <nettle/cbc.h>
#include <nettle/hmac.h>
#include <nettle/md4.h>
#include <nettle/md5.h>
#include <nettle/pbkdf2.h>
#include <nettle/sha1.h>
#include <nettle/sha2.h>

namespace bench {

namespace {

/// One direction of a cipher: `SetKey` prepares a context, `Process` handles whole blocks.
template <class Context, auto SetKey, auto Process, std::size_t BlockSize, auto Mode>
Work makeCipher(const CipherTask& task, const Result& result) {
    return [=] {
        Context context;
        SetKey(&context, task.key.data());
        Bytes iv = task.iv;
        Mode(&context, reinterpret_cast<nettle_cipher_func*>(Process), BlockSize, iv.data(), task.input.size(),
             result->data(), task.input.data());
    };
}

void setBlowfishKey(blowfish_ctx* context, const std::uint8_t* key) {
    blowfish_set_key(context, 16, key);
}

template <class Context, auto Init, auto Update, auto Digest>
Work makeHash(const Bytes& data, const Result& result) {
    return [=] {
        Context context;
        Init(&context);
        Update(&context, data.size(), data.data());
        Digest(&context, result->size(), result->data());
    };
}

class NettlePeer : public Peer {
public:
    const char* getName() const override { return "nettle"; }

    Work cipher(const CipherTask& task, const Result& result) const override {
        const bool encrypts = task.isEncrypting;
        if (task.id == "aes256cbc")
            return encrypts
                       ? makeCipher<aes256_ctx, aes256_set_encrypt_key, aes256_encrypt, 16, cbc_encrypt>(task, result)
                       : makeCipher<aes256_ctx, aes256_set_decrypt_key, aes256_decrypt, 16, cbc_decrypt>(task, result);
        if (task.id == "aes128cbc")
            return encrypts
                       ? makeCipher<aes128_ctx, aes128_set_encrypt_key, aes128_encrypt, 16, cbc_encrypt>(task, result)
                       : makeCipher<aes128_ctx, aes128_set_decrypt_key, aes128_decrypt, 16, cbc_decrypt>(task, result);
        if (task.id == "bfcbc")
            return encrypts ? makeCipher<blowfish_ctx, setBlowfishKey, blowfish_encrypt, 8, cbc_encrypt>(task, result)
                            : makeCipher<blowfish_ctx, setBlowfishKey, blowfish_decrypt, 8, cbc_decrypt>(task, result);
        if (task.id == "cast128cbc")
            return encrypts ? makeCipher<cast128_ctx, cast128_set_key, cast128_encrypt, 8, cbc_encrypt>(task, result)
                            : makeCipher<cast128_ctx, cast128_set_key, cast128_decrypt, 8, cbc_decrypt>(task, result);
        return {};
    }

    Work digest(const std::string& id, const Bytes& data, const Result& result) const override {
        if (id == "md4")
            return makeHash<md4_ctx, md4_init, md4_update, md4_digest>(data, result);
        if (id == "md5")
            return makeHash<md5_ctx, md5_init, md5_update, md5_digest>(data, result);
        if (id == "sha1")
            return makeHash<sha1_ctx, sha1_init, sha1_update, sha1_digest>(data, result);
        if (id == "sha256")
            return makeHash<sha256_ctx, sha256_init, sha256_update, sha256_digest>(data, result);
        return {};
    }

    Work hmacSHA1(const Bytes& key, const Bytes& data, const Result& result) const override {
        return [=] {
            hmac_sha1_ctx context;
            hmac_sha1_set_key(&context, key.size(), key.data());
            hmac_sha1_update(&context, data.size(), data.data());
            hmac_sha1_digest(&context, result->size(), result->data());
        };
    }

    Work deriveKey(const std::string& password, const std::string& salt, int iterations,
                   const Result& result) const override {
        return [=] {
            pbkdf2_hmac_sha1(password.size(), reinterpret_cast<const std::uint8_t*>(password.data()),
                             static_cast<unsigned>(iterations), salt.size(),
                             reinterpret_cast<const std::uint8_t*>(salt.data()), result->size(), result->data());
        };
    }

    Work encodeBase64(const Bytes& data, const Result& result) const override {
        return [=] { base64_encode_raw(reinterpret_cast<char*>(result->data()), data.size(), data.data()); };
    }

    Work decodeBase64(const std::string& text, const Result& result) const override {
        return [=] {
            base64_decode_ctx context;
            base64_decode_init(&context);
            std::size_t size = result->size();
            base64_decode_update(&context, &size, result->data(), text.size(), text.data());
        };
    }
};

} // namespace

std::unique_ptr<Peer> createNettle() {
    return std::make_unique<NettlePeer>();
}

} // namespace bench
