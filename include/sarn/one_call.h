// SPDX-License-Identifier: Apache-2.0
/// \file
/// The most common operations as single calls on views of bytes. Header-only. Text is UTF-8. More than 2^31 - 1 bytes
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

/// Encrypts with the cipher registered under `id`: ICipher::encrypt(). A random IV precedes the ciphertext.
/// \throws as CCipherManager::getCipher() and the cipher do.
inline ul::TBuffer<unsigned char> encrypt(const ul::CText& id, const ul::TCryptBuffer<unsigned char>& key,
                                          ul::CBytes plaintext) {
    ul::TBuffer<unsigned char> out;
    const ul::P<ICipher> cipher = CCipherManager::get()->getCipher(id.get());
    cipher->encrypt(key, plaintext.data(), plaintext.getIntSize("encrypt"), out, false, nullptr);
    return out;
}

/// Decrypts the result of encrypt(): ICipher::decrypt(). The returned buffer is wiped on destruction.
/// \throws as CCipherManager::getCipher() and the cipher do.
inline ul::TCryptBuffer<unsigned char> decrypt(const ul::CText& id, const ul::TCryptBuffer<unsigned char>& key,
                                               ul::CBytes encrypted) {
    ul::TCryptBuffer<unsigned char> out;
    const ul::P<ICipher> cipher = CCipherManager::get()->getCipher(id.get());
    cipher->decrypt(key, encrypted.data(), encrypted.getIntSize("decrypt"), out, false, nullptr);
    return out;
}

/// Adds bytes to a digest: IDigest::update(). An empty view changes nothing, even if its pointer is null.
/// \throws as IDigest::update() does.
inline void feed(IDigest& digest, ul::CBytes bytes) {
    const int size = bytes.getIntSize("feed");
    digest.update(size > 0 ? static_cast<const void*>(bytes.data()) : "", size);
}

/// Ends the input of a digest and returns a copy of its result: IDigest::finish() and IDigest::storeDigestData().
inline ul::TBuffer<unsigned char> finish(IDigest& digest) {
    digest.finish();
    ul::TBuffer<unsigned char> result(digest.getDigestSize(), -1);
    digest.storeDigestData(result.getData());
    return result;
}

/// Creates a running digest of the type registered under `id`: IDigestType::createDigest().
/// \throws as CDigestManager::getType() does.
inline ul::P<IDigest> createDigest(const ul::CText& id) {
    return CDigestManager::get()->getType(id.get())->createDigest();
}

/// The digest of `bytes`, with the type registered under `id`.
/// \throws as CDigestManager::getType() does.
inline ul::TBuffer<unsigned char> digest(const ul::CText& id, ul::CBytes bytes) {
    const ul::P<IDigest> running = createDigest(id);
    feed(*running, bytes);
    return finish(*running);
}

/// Computes an HMAC with SHA-1: calcHMAC_SHA1(). The 20 bytes are wiped on destruction, since they may serve as a key.
/// The key comes first here; its own type prevents confusion with the message.
/// \throws as calcHMAC() does.
inline ul::TCryptBuffer<unsigned char> hmacSHA1(const ul::TCryptBuffer<unsigned char>& key, ul::CBytes message) {
    ul::TCryptBuffer<unsigned char> out;
    calcHMAC_SHA1(out, message.data(), message.getIntSize("hmacSHA1"), key.getData(), key.getUsed());
    return out;
}

/// Encodes as Base64 with padding and without line breaks: base64Encode().
/// \throws as base64Encode() does.
inline std::string base64(ul::CBytes bytes) {
    return base64Encode(bytes.data(), bytes.getIntSize("base64"), true, false).toLatin1();
}

/// Decodes Base64: base64Decode().
/// \throws as base64Decode() does.
inline ul::TBuffer<unsigned char> fromBase64(const ul::CText& text) {
    ul::TBuffer<unsigned char> bytes;
    base64Decode(text.get(), bytes);
    return bytes;
}

/// Derives a key: deriveKey_PKCS5_PBKDF2_HMAC_SHA1(). The key is wiped on destruction.
/// \throws ul::CInvalidArgError "invalid iteration count", "invalid key size" if a number is not positive, which
///         libcrypto may accept; as deriveKey_PKCS5_PBKDF2_HMAC_SHA1() does.
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
