// SPDX-License-Identifier: Apache-2.0
#include "peers/peer.h"

#include <sarn/cipher.h>
#include <sarn/digest.h>
#include <sarn/encoding.h>

#include <algorithm>

namespace bench {

namespace {

class SarnPeer : public Peer {
public:
    const char* getName() const override { return "sarn"; }

    Work cipher(const CipherTask& task, const Result& result) const override {
        const ul::P<sarn::ICipher> cipher = task.id == "ideacbc"
                                                ? ul::P<sarn::ICipher>(ul::make<sarn::CCipher_IDEACBC>())
                                                : sarn::CCipherManager::get()->getCipher(task.id.c_str());
        const auto key = std::make_shared<ul::TCryptBuffer<unsigned char>>();
        key->init(task.key.data(), static_cast<int>(task.key.size()));
        const auto out = std::make_shared<ul::TBuffer<unsigned char>>();
        const auto operation =
            task.isEncrypting ? &sarn::ICipher::encryptWithoutPadding : &sarn::ICipher::decryptWithoutPadding;
        return [=, isFirst = true]() mutable {
            ((*cipher).*operation)(*key, task.input.data(), static_cast<int>(task.input.size()), *out, false,
                                   task.iv.data());
            if (std::exchange(isFirst, false))
                std::copy_n(out->getData(), out->getUsed(), result->begin());
        };
    }

    Work digest(const std::string& id, const Bytes& data, const Result& result) const override {
        return [=, type = sarn::CDigestManager::get()->getType(id.c_str())] {
            const ul::P<sarn::IDigest> digest = type->createDigest();
            digest->update(data.data(), static_cast<int>(data.size()));
            digest->finish();
            digest->storeDigestData(result->data());
        };
    }

    Work hmacSHA1(const Bytes& key, const Bytes& data, const Result& result) const override {
        const auto out = std::make_shared<ul::TBuffer<unsigned char>>();
        return [=] {
            sarn::calcHMAC_SHA1(*out, data.data(), static_cast<int>(data.size()), key.data(),
                                static_cast<int>(key.size()));
            std::copy_n(out->getData(), out->getUsed(), result->begin());
        };
    }

    Work deriveKey(const std::string& password, const std::string& salt, int iterations,
                   const Result& result) const override {
        return [=] {
            sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1(password.data(), static_cast<int>(password.size()), salt.data(),
                                                   static_cast<int>(salt.size()), iterations,
                                                   static_cast<int>(result->size()), result->data());
        };
    }

    Work encodeBase64(const Bytes& data, const Result& result) const override {
        return [=, isFirst = true]() mutable {
            const ul::String text = sarn::base64Encode(data.data(), static_cast<int>(data.size()), true, false);
            if (std::exchange(isFirst, false))
                text.copyLatin1(reinterpret_cast<char*>(result->data()), 0, text.getLength());
        };
    }

    Work decodeBase64(const std::string& text, const Result& result) const override {
        const auto out = std::make_shared<ul::TBuffer<unsigned char>>();
        return [=, wide = ul::String(text.c_str()), isFirst = true]() mutable {
            sarn::base64Decode(wide, *out);
            if (std::exchange(isFirst, false))
                std::copy_n(out->getData(), out->getUsed(), result->begin());
        };
    }
};

} // namespace

std::unique_ptr<Peer> createSarn() {
    return std::make_unique<SarnPeer>();
}

} // namespace bench
