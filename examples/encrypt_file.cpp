// SPDX-License-Identifier: Apache-2.0
// Encrypts a file of any size with a password, or decrypts it. An encrypted file is a salt, the ciphertext with its IV,
// and an HMAC, which detects a file that was cut or changed.
#include <sarn/host.h>

#include <algorithm>
#include <fstream>
#include <iostream>

using Key = ul::TCryptBuffer<unsigned char>;

constexpr int saltSize = 16;
constexpr int macSize = 20;
constexpr int pieceSize = 1 << 20;
constexpr int iterations = 100000;

Key authenticate(const Key& key, sarn::IDigest& ciphertext) {
    return sarn::hmacSHA1(sarn::hmacSHA1(key, "a key of its own"), sarn::finish(ciphertext));
}

void encrypt(ul::CWindowsFileInStream& in, std::ostream& out, ul::CBytes password) {
    const Key salt = ul::makeRandomBytes(saltSize);
    const Key key = sarn::deriveKey(password, salt, iterations, 32);
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

void decrypt(ul::CWindowsFileInStream& in, std::ostream& out, ul::CBytes password) {
    std::int64_t left = in.getLength() - saltSize - macSize;
    Key salt(saltSize, -1), mac(macSize, -1), piece(pieceSize, -1);
    in.read(salt.getData(), saltSize);
    const Key key = sarn::deriveKey(password, salt, iterations, 32);
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

// The result under a temporary name. It is removed unless it was renamed.
struct NewFile {
    const std::filesystem::path part;
    std::ofstream out{part, std::ios::binary};
    ~NewFile() {
        std::error_code ignored;
        out.close();
        std::filesystem::remove(part, ignored);
    }
};

int main(int count, char** words) try {
    const std::string command = count == 5 ? words[1] : "";
    if (command != "encrypt" && command != "decrypt")
        throw std::runtime_error("usage: encrypt_file encrypt|decrypt FROM TO PASSWORD_FILE");
    ul::CWindowsFileInStream in(ul::path(words[2]));
    NewFile file{ul::native(ul::path(words[3] + std::string(".part")))};
    (command == "encrypt" ? encrypt : decrypt)(in, file.out, ul::readSecretLine(ul::path(words[4])).toUTF8());
    file.out.close();
    if (!file.out)
        throw std::runtime_error(std::string("Cannot write ") + words[3] + ".part");
    std::filesystem::rename(file.part, ul::native(ul::path(words[3])));
} catch (const std::exception& error) {
    std::cerr << ul::formatError(error) << "\n";
    return 1;
}
