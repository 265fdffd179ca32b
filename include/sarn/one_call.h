// SPDX-License-Identifier: Apache-2.0
/// \file
/// What hosts do most often, each in one call over views of bytes. Header-only. Text is UTF-8. More than 2^31 - 1 bytes
/// raise ul::CInvalidArgError "data is too large". Safe from any thread.
#pragma once

#include "sarn/cipher.h"
#include "sarn/digest.h"
#include "sarn/encoding.h"

#include "ul/bytes.h"
#include "ul/text.h"

#include <string>
#include <string_view>

namespace sarn {

/// ICipher::encrypt() of the cipher registered under `id`, with a random IV before the ciphertext.
/// \throws as CCipherManager::getCipher() and the cipher do
inline ul::TBuffer<unsigned char> encrypt(const ul::CText& id, const ul::TCryptBuffer<unsigned char>& key,
                                          ul::CBytes plaintext) {
    ul::TBuffer<unsigned char> out;
    const ul::P<ICipher> cipher = CCipherManager::get()->getCipher(id.get());
    cipher->encrypt(key, plaintext.data(), plaintext.getIntSize("encrypt"), out, false, nullptr);
    return out;
}

/// ICipher::decrypt() of what encrypt() gave. The result wipes itself.
/// \throws as CCipherManager::getCipher() and the cipher do
inline ul::TCryptBuffer<unsigned char> decrypt(const ul::CText& id, const ul::TCryptBuffer<unsigned char>& key,
                                               ul::CBytes encrypted) {
    ul::TCryptBuffer<unsigned char> out;
    const ul::P<ICipher> cipher = CCipherManager::get()->getCipher(id.get());
    cipher->decrypt(key, encrypted.data(), encrypted.getIntSize("decrypt"), out, false, nullptr);
    return out;
}

/// IDigest::update(). No bytes change nothing, where null data would take a checksum back to its start.
/// \throws as IDigest::update() does
inline void feed(IDigest& digest, ul::CBytes bytes) {
    const int size = bytes.getIntSize("feed");
    digest.update(size > 0 ? static_cast<const void*>(bytes.data()) : "", size);
}

/// Ends the input of a digest and copies its result: IDigest::finish() and IDigest::storeDigestData().
inline ul::TBuffer<unsigned char> finish(IDigest& digest) {
    digest.finish();
    ul::TBuffer<unsigned char> result(digest.getDigestSize(), -1);
    digest.storeDigestData(result.getData());
    return result;
}

/// A running digest of the type registered under `id`: IDigestType::createDigest().
/// \throws as CDigestManager::getType() does
inline ul::P<IDigest> createDigest(const ul::CText& id) {
    return CDigestManager::get()->getType(id.get())->createDigest();
}

/// The digest of `bytes`, of the type registered under `id`.
/// \throws as CDigestManager::getType() does
inline ul::TBuffer<unsigned char> digest(const ul::CText& id, ul::CBytes bytes) {
    const ul::P<IDigest> running = createDigest(id);
    feed(*running, bytes);
    return finish(*running);
}

/// calcHMAC_SHA1(): 20 bytes, which wipe themselves, since they may serve as a key. The key comes first here; it is of
/// a type of its own, so that the two are not exchanged. \throws as calcHMAC() does
inline ul::TCryptBuffer<unsigned char> hmacSHA1(const ul::TCryptBuffer<unsigned char>& key, ul::CBytes message) {
    ul::TCryptBuffer<unsigned char> out;
    calcHMAC_SHA1(out, message.data(), message.getIntSize("hmacSHA1"), key.getData(), key.getUsed());
    return out;
}

/// base64Encode() with padding and without line breaks.
/// \throws as base64Encode() does
inline std::string base64(ul::CBytes bytes) {
    return base64Encode(bytes.data(), bytes.getIntSize("base64"), true, false).toLatin1();
}

/// base64Decode().
/// \throws as base64Decode() does
inline ul::TBuffer<unsigned char> fromBase64(const ul::CText& text) {
    ul::TBuffer<unsigned char> bytes;
    base64Decode(text.get(), bytes);
    return bytes;
}

/// deriveKey_PKCS5_PBKDF2_HMAC_SHA1() into a key that wipes itself.
/// \throws ul::CInvalidArgError "invalid iteration count" and "invalid key size" if a number is not positive, of which
///         libcrypto may not complain; as deriveKey_PKCS5_PBKDF2_HMAC_SHA1() does
inline ul::TCryptBuffer<unsigned char> deriveKey(ul::CBytes password, ul::CBytes salt, int iterations, int size) {
    if (iterations < 1)
        throw ul::CInvalidArgError("deriveKey", "invalid iteration count", ul::CProps());
    if (size < 1)
        throw ul::CInvalidArgError("deriveKey", "invalid key size", ul::CProps());
    const int passwordSize = password.getIntSize("deriveKey");
    const int saltSize = salt.getIntSize("deriveKey");
    ul::TCryptBuffer<unsigned char> key(size, -1);
    deriveKey_PKCS5_PBKDF2_HMAC_SHA1(password.data(), passwordSize, salt.data(), saltSize, iterations, size,
                                     key.getData());
    return key;
}

} // namespace sarn
