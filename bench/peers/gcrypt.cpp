// SPDX-License-Identifier: Apache-2.0
#include "peers/peer.h"

#include <gcrypt.h>

#include <map>

namespace bench {

namespace {

const std::map<std::string, int> ciphers = {{"aes256cbc", GCRY_CIPHER_AES256},
                                            {"aes128cbc", GCRY_CIPHER_AES128},
                                            {"bfcbc", GCRY_CIPHER_BLOWFISH},
                                            {"cast128cbc", GCRY_CIPHER_CAST5}};
const std::map<std::string, int> hashes = {
    {"md4", GCRY_MD_MD4}, {"md5", GCRY_MD_MD5}, {"sha1", GCRY_MD_SHA1}, {"sha256", GCRY_MD_SHA256}};

class GcryptPeer : public Peer {
public:
    GcryptPeer() {
        gcry_check_version(nullptr);
        gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
        gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    }

    const char* getName() const override { return "libgcrypt"; }

    Work cipher(const CipherTask& task, const Result& result) const override {
        const auto algorithm = ciphers.find(task.id);
        if (algorithm == ciphers.end())
            return {};
        return [=, id = algorithm->second] {
            gcry_cipher_hd_t handle = nullptr;
            gcry_cipher_open(&handle, id, GCRY_CIPHER_MODE_CBC, 0);
            gcry_cipher_setkey(handle, task.key.data(), task.key.size());
            gcry_cipher_setiv(handle, task.iv.data(), task.iv.size());
            const auto process = task.isEncrypting ? gcry_cipher_encrypt : gcry_cipher_decrypt;
            process(handle, result->data(), result->size(), task.input.data(), task.input.size());
            gcry_cipher_close(handle);
        };
    }

    Work digest(const std::string& id, const Bytes& data, const Result& result) const override {
        const auto algorithm = hashes.find(id);
        if (algorithm == hashes.end())
            return {};
        return
            [=, number = algorithm->second] { gcry_md_hash_buffer(number, result->data(), data.data(), data.size()); };
    }

    Work hmacSHA1(const Bytes& key, const Bytes& data, const Result& result) const override {
        return [=] {
            gcry_mac_hd_t handle = nullptr;
            gcry_mac_open(&handle, GCRY_MAC_HMAC_SHA1, 0, nullptr);
            gcry_mac_setkey(handle, key.data(), key.size());
            gcry_mac_write(handle, data.data(), data.size());
            std::size_t size = result->size();
            gcry_mac_read(handle, result->data(), &size);
            gcry_mac_close(handle);
        };
    }

    Work deriveKey(const std::string& password, const std::string& salt, int iterations,
                   const Result& result) const override {
        return [=] {
            gcry_kdf_derive(password.data(), password.size(), GCRY_KDF_PBKDF2, GCRY_MD_SHA1, salt.data(), salt.size(),
                            static_cast<unsigned long>(iterations), result->size(), result->data());
        };
    }
};

} // namespace

std::unique_ptr<Peer> createGcrypt() {
    return std::make_unique<GcryptPeer>();
}

} // namespace bench
