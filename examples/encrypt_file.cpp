// SPDX-License-Identifier: Apache-2.0
// Encrypts a file with a password, or decrypts it again, in pieces that fit into memory. An encrypted file is a salt,
// then pieces, each its size and its bytes under an IV of its own. The last holds the SHA-256 of the plaintext.
#include <sarn/sarn.h>

#include <cstring>
#include <fstream>
#include <iostream>

using Bytes = ul::TBuffer<unsigned char>;

constexpr int pieceSize = 1 << 20;
constexpr int digestSize = 32;

const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher("aes256cbc");
const ul::P<sarn::IDigest> digest = sarn::CDigestManager::get()->getType("sha256")->createDigest();

ul::PC<ul::TCryptBuffer<unsigned char>> deriveKey(const char* password, unsigned long long salt) {
    ul::TCryptBuffer<char> buffer;
    buffer.init(password, static_cast<int>(std::strlen(password)));
    return ul::make<sarn::CPasswordKeyCache>(buffer)->getKey(cipher->getKeySize(), salt, 100000);
}

void encrypt(ul::IInStream& in, std::ostream& out, const char* password) {
    unsigned long long salt; // no secret, but another one for every file
    ul::CMTRand::getGlobal()->randData(reinterpret_cast<unsigned char*>(&salt), sizeof salt);
    out.write(reinterpret_cast<const char*>(&salt), sizeof salt);
    const auto key = deriveKey(password, salt);
    Bytes plain(pieceSize, -1), encrypted;
    const auto writePiece = [&](const void* data, int size) {
        cipher->encrypt(*key, data, size, encrypted, false, nullptr);
        const int encryptedSize = encrypted.getUsed();
        out.write(reinterpret_cast<const char*>(&encryptedSize), sizeof encryptedSize);
        out.write(reinterpret_cast<const char*>(encrypted.getData()), encryptedSize);
    };
    while (const int size = in.readLax(plain.getData(), pieceSize)) {
        digest->update(plain.getData(), size);
        writePiece(plain.getData(), size);
    }
    digest->finish();
    writePiece(digest->getDigestData(), digestSize);
}

void decrypt(ul::IInStream& in, std::ostream& out, const char* password) {
    unsigned long long salt;
    in.read(&salt, sizeof salt);
    const auto key = deriveKey(password, salt);
    Bytes piece, plain;
    ul::CDataInStream values(in);
    while (true) {
        const int size = values.readInt32();
        if (size < 0 || size > pieceSize + 64) // what nobody has verified yet decides no allocation
            throw std::runtime_error("The file is damaged.");
        piece.setUsed(size);
        values.read(piece.getData(), size);
        cipher->decrypt(*key, piece.getData(), size, plain, false, nullptr);
        if (in.isEndOfStream())
            break;
        digest->update(plain.getData(), plain.getUsed());
        out.write(reinterpret_cast<const char*>(plain.getData()), plain.getUsed());
    }
    digest->finish();
    if (plain.getUsed() != digestSize || std::memcmp(plain.getData(), digest->getDigestData(), digestSize) != 0)
        throw std::runtime_error("The file is damaged, or somebody changed it.");
}

int main(int count, char** words) try {
    if (count != 5)
        throw std::runtime_error("usage: encrypt_file encrypt|decrypt FROM TO PASSWORD");
    ul::CWindowsFileInStream in{ul::CWindowsPath(words[2])};
    std::ofstream out(words[3], std::ios::binary);
    words[1] == std::string("encrypt") ? encrypt(in, out, words[4]) : decrypt(in, out, words[4]);
    if (!out.flush())
        throw std::runtime_error(std::string("Cannot write ") + words[3]);
} catch (const std::exception& error) { // the library's errors are standard exceptions, too
    std::cerr << error.what() << "\n";
    return 1;
}
