// SPDX-License-Identifier: Apache-2.0
// Encrypts a file of any size with a password, or decrypts it: a salt, the ciphertext, and an HMAC, so that nobody cuts
// or changes the file unnoticed. The result gets its name when it is whole and right.
#include <sarn/host.h>

#include <algorithm>
#include <fstream>
#include <iostream>

using Key = ul::TCryptBuffer<unsigned char>;

constexpr int saltSize = 16;
constexpr int macSize = 20;
constexpr int pieceSize = 1 << 20;

Key deriveKey(const ul::CSecretText& password, ul::CBytes salt) {
    return sarn::deriveKey(password.toUTF8(), salt, 100000, 32);
}

Key authenticate(const Key& key, sarn::IDigest& ciphertext) {
    return sarn::hmacSHA1(sarn::hmacSHA1(key, "a key of its own"), sarn::finish(ciphertext));
}

void encrypt(ul::CWindowsFileInStream& in, std::ostream& out, const ul::CSecretText& password) {
    const Key salt = ul::makeRandomBytes(saltSize);
    const Key key = deriveKey(password, salt);
    const ul::P<sarn::IDigest> digest = sarn::createDigest("sha256");
    const auto write = [&](ul::CBytes bytes) {
        sarn::feed(*digest, bytes);
        out << bytes.asText();
    };
    out << ul::CBytes(salt).asText();
    sarn::CStreamEncryptor encryptor("aes256cbc", key);
    Key piece(pieceSize, -1);
    while (const int size = in.readLax(piece.getData(), pieceSize))
        write(encryptor.update({piece.getData(), size}));
    write(encryptor.finish());
    out << ul::CBytes(authenticate(key, *digest)).asText();
}

void decrypt(ul::CWindowsFileInStream& in, std::ostream& out, const ul::CSecretText& password) {
    std::int64_t left = in.getLength() - saltSize - macSize;
    Key salt(saltSize, -1), mac(macSize, -1), piece(pieceSize, -1);
    in.read(salt.getData(), saltSize);
    const Key key = deriveKey(password, salt);
    const ul::P<sarn::IDigest> digest = sarn::createDigest("sha256");
    sarn::CStreamDecryptor decryptor("aes256cbc", key);
    for (int size; left > 0; left -= size) {
        size = static_cast<int>(std::min<std::int64_t>(left, pieceSize));
        in.read(piece.getData(), size);
        sarn::feed(*digest, {piece.getData(), size});
        out << decryptor.update({piece.getData(), size}).asText();
    }
    in.read(mac.getData(), macSize);
    if (ul::CBytes(mac) != authenticate(key, *digest))
        throw std::runtime_error("The password is another one, or the file was cut or changed.");
    out << decryptor.finish().asText();
}

int main(int count, char** words) try {
    if (count != 5)
        throw std::runtime_error("usage: host_encrypt_stream encrypt|decrypt FROM TO PASSWORD_FILE");
    ul::CWindowsFileInStream in(ul::path(words[2]));
    const std::filesystem::path unfinished = ul::native(ul::path(words[3] + std::string(".part")));
    std::ofstream out(unfinished, std::ios::binary);
    out.exceptions(std::ios::badbit | std::ios::failbit);
    (words[1] == std::string("encrypt") ? encrypt : decrypt)(in, out, ul::readSecretLine(ul::path(words[4])));
    out.close();
    std::filesystem::rename(unfinished, ul::native(ul::path(words[3])));
} catch (const std::exception& error) {
    std::cerr << ul::formatError(error) << "\n";
    return 1;
}
