// SPDX-License-Identifier: Apache-2.0
#define CRYPTOPP_ENABLE_NAMESPACE_WEAK 1
#include "peers/peer.h"

#include <cryptopp/aes.h>
#include <cryptopp/base64.h>
#include <cryptopp/blowfish.h>
#include <cryptopp/cast.h>
#include <cryptopp/filters.h>
#include <cryptopp/hmac.h>
#include <cryptopp/idea.h>
#include <cryptopp/md4.h>
#include <cryptopp/md5.h>
#include <cryptopp/modes.h>
#include <cryptopp/pwdbased.h>
#include <cryptopp/sha.h>

namespace bench {

namespace {

template <class Algorithm>
Work makeCipher(const CipherTask& task, const Result& result) {
    if (task.isEncrypting)
        return [=] {
            typename CryptoPP::CBC_Mode<Algorithm>::Encryption mode(task.key.data(), task.key.size(), task.iv.data());
            mode.ProcessData(result->data(), task.input.data(), task.input.size());
        };
    return [=] {
        typename CryptoPP::CBC_Mode<Algorithm>::Decryption mode(task.key.data(), task.key.size(), task.iv.data());
        mode.ProcessData(result->data(), task.input.data(), task.input.size());
    };
}

template <class Hash>
Work makeHash(const Bytes& data, const Result& result) {
    return [=] { Hash().CalculateDigest(result->data(), data.data(), data.size()); };
}

class CryptoPPPeer : public Peer {
public:
    const char* getName() const override { return "crypto++"; }

    Work cipher(const CipherTask& task, const Result& result) const override {
        if (task.id == "bfcbc")
            return makeCipher<CryptoPP::Blowfish>(task, result);
        if (task.id == "cast128cbc")
            return makeCipher<CryptoPP::CAST128>(task, result);
        if (task.id == "ideacbc")
            return makeCipher<CryptoPP::IDEA>(task, result);
        return makeCipher<CryptoPP::AES>(task, result);
    }

    Work digest(const std::string& id, const Bytes& data, const Result& result) const override {
        if (id == "md4")
            return makeHash<CryptoPP::Weak::MD4>(data, result);
        if (id == "md5")
            return makeHash<CryptoPP::Weak::MD5>(data, result);
        if (id == "sha1")
            return makeHash<CryptoPP::SHA1>(data, result);
        if (id == "sha256")
            return makeHash<CryptoPP::SHA256>(data, result);
        return {};
    }

    Work hmacSHA1(const Bytes& key, const Bytes& data, const Result& result) const override {
        return [=] {
            CryptoPP::HMAC<CryptoPP::SHA1>(key.data(), key.size())
                .CalculateDigest(result->data(), data.data(), data.size());
        };
    }

    Work deriveKey(const std::string& password, const std::string& salt, int iterations,
                   const Result& result) const override {
        return [=] {
            CryptoPP::PKCS5_PBKDF2_HMAC<CryptoPP::SHA1>().DeriveKey(
                result->data(), result->size(), 0, reinterpret_cast<const CryptoPP::byte*>(password.data()),
                password.size(), reinterpret_cast<const CryptoPP::byte*>(salt.data()), salt.size(),
                static_cast<unsigned>(iterations), 0.0);
        };
    }

    Work encodeBase64(const Bytes& data, const Result& result) const override {
        return [=] {
            CryptoPP::ArraySource(
                data.data(), data.size(), true,
                new CryptoPP::Base64Encoder(new CryptoPP::ArraySink(result->data(), result->size()), false));
        };
    }

    Work decodeBase64(const std::string& text, const Result& result) const override {
        return [=] {
            CryptoPP::StringSource(
                text, true, new CryptoPP::Base64Decoder(new CryptoPP::ArraySink(result->data(), result->size())));
        };
    }
};

} // namespace

std::unique_ptr<Peer> createCryptoPP() {
    return std::make_unique<CryptoPPPeer>();
}

} // namespace bench
