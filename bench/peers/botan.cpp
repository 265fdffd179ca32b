// SPDX-License-Identifier: Apache-2.0
#include "peers/peer.h"

#include <botan/base64.h>
#include <botan/cipher_mode.h>
#include <botan/hash.h>
#include <botan/mac.h>
#include <botan/pbkdf.h>

#include <cstring>
#include <map>

namespace bench {

namespace {

const std::map<std::string, std::string> ciphers = {{"aes256cbc", "AES-256"},
                                                    {"aes128cbc", "AES-128"},
                                                    {"bfcbc", "Blowfish"},
                                                    {"cast128cbc", "CAST-128"},
                                                    {"ideacbc", "IDEA"}};
const std::map<std::string, std::string> hashes = {
    {"md4", "MD4"}, {"md5", "MD5"}, {"sha1", "SHA-160"}, {"sha256", "SHA-256"}};

class BotanPeer : public Peer {
public:
    const char* getName() const override { return "botan"; }

    Work cipher(const CipherTask& task, const Result& result) const override {
        const std::string name = ciphers.at(task.id) + "/CBC/NoPadding";
        const Botan::Cipher_Dir direction = task.isEncrypting ? Botan::ENCRYPTION : Botan::DECRYPTION;
        return [=] {
            const std::unique_ptr<Botan::Cipher_Mode> mode = Botan::Cipher_Mode::create(name, direction);
            mode->set_key(task.key.data(), task.key.size());
            mode->start(task.iv.data(), task.iv.size());
            result->assign(task.input.begin(), task.input.end());
            mode->process(result->data(), result->size());
        };
    }

    Work digest(const std::string& id, const Bytes& data, const Result& result) const override {
        const auto name = hashes.find(id);
        if (name == hashes.end())
            return {};
        return [=, algorithm = name->second] {
            const std::unique_ptr<Botan::HashFunction> hash = Botan::HashFunction::create(algorithm);
            hash->update(data);
            hash->final(result->data());
        };
    }

    Work hmacSHA1(const Bytes& key, const Bytes& data, const Result& result) const override {
        return [=] {
            const auto mac = Botan::MessageAuthenticationCode::create("HMAC(SHA-160)");
            mac->set_key(key);
            mac->update(data);
            mac->final(result->data());
        };
    }

    Work deriveKey(const std::string& password, const std::string& salt, int iterations,
                   const Result& result) const override {
        return [=] {
            const auto function = Botan::PBKDF::create("PBKDF2(SHA-160)");
            function->pbkdf_iterations(result->data(), result->size(), password,
                                       reinterpret_cast<const std::uint8_t*>(salt.data()), salt.size(),
                                       static_cast<std::size_t>(iterations));
        };
    }

    Work encodeBase64(const Bytes& data, const Result& result) const override {
        return [=] {
            const std::string text = Botan::base64_encode(data);
            std::memcpy(result->data(), text.data(), result->size());
        };
    }

    Work decodeBase64(const std::string& text, const Result& result) const override {
        return [=] { Botan::base64_decode(result->data(), text); };
    }
};

} // namespace

std::unique_ptr<Peer> createBotan() {
    return std::make_unique<BotanPeer>();
}

} // namespace bench
