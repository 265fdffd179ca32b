// SPDX-License-Identifier: Apache-2.0
// Encrypts a file with a password, or decrypts it again, in pieces that fit into memory.
//
// An encrypted file is the salt, then pieces of the plaintext and in the end its SHA-256, each encrypted under an IV of
// its own, as a boolean that is true for the digest, the size and the bytes.
#include <sarn/sarn.h>

#include <cstring>
#include <fstream>
#include <iostream>

using Bytes = ul::TBuffer<unsigned char>;
using Key = ul::TCryptBuffer<unsigned char>;

constexpr int pieceSize = 1 << 20;

void write(std::ostream& out, sarn::ICipher& cipher, const Key& key, bool isDigest, const void* data, int size) {
    Bytes encrypted;
    cipher.encrypt(key, data, size, encrypted, false, nullptr);
    Bytes piece;
    ul::CBufferStream stream(&piece, 2.0);
    ul::CDataOutStream values(stream);
    values.writeBool(isDigest).writeInt32(encrypted.getUsed()).write(encrypted.getData(), encrypted.getUsed());
    out.write(reinterpret_cast<const char*>(piece.getData()), piece.getUsed());
}

void encrypt(ul::CWindowsFileInStream& in, std::ostream& out, sarn::ICipher& cipher, const Key& key,
             sarn::IDigest& digest) {
    Bytes plain(pieceSize, -1);
    while (const int size = in.readLax(plain.getData(), pieceSize)) {
        digest.update(plain.getData(), size);
        write(out, cipher, key, false, plain.getData(), size);
    }
    digest.finish();
    write(out, cipher, key, true, digest.getDigestData(), digest.getDigestSize());
}

bool decrypt(ul::CDataInStream& in, std::ostream& out, sarn::ICipher& cipher, const Key& key, sarn::IDigest& digest) {
    Bytes piece;
    Bytes plain;
    while (true) {
        const bool isDigest = in.readBool();
        const int size = in.readInt32();
        if (size < 0 || size > pieceSize + 64) // what nobody has verified decides no allocation
            return false;
        piece.setUsed(size);
        in.read(piece.getData(), size);
        cipher.decrypt(key, piece.getData(), size, plain, false, nullptr);
        if (isDigest) {
            digest.finish();
            return plain.getUsed() == 32 && std::memcmp(plain.getData(), digest.getDigestData(), 32) == 0;
        }
        digest.update(plain.getData(), plain.getUsed());
        out.write(reinterpret_cast<const char*>(plain.getData()), plain.getUsed());
    }
}

int main(int count, char** words) try {
    if (count != 5)
        return std::cerr << "usage: encrypt_file encrypt|decrypt FROM TO PASSWORD\n", 2;
    ul::TCryptBuffer<char> password;
    password.init(words[4], static_cast<int>(std::strlen(words[4])));
    ul::CWindowsFileInStream in{ul::CWindowsPath(ul::String(words[2]))};
    std::ofstream out(words[3], std::ios::binary);
    unsigned long long salt = 0; // no secret, but another one for every file
    const bool isToEncrypt = words[1] == std::string("encrypt");
    isToEncrypt ? ul::CMTRand::getGlobal()->randData(reinterpret_cast<unsigned char*>(&salt), sizeof salt)
                : in.read(&salt, sizeof salt);
    const auto key = ul::make<sarn::CPasswordKeyCache>(password)->getKey(32, salt, 100000);
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher("aes256cbc");
    const ul::P<sarn::IDigest> digest = sarn::CDigestManager::get()->getType("sha256")->createDigest();
    ul::CDataInStream values(in);
    bool isWhole = true;
    if (isToEncrypt) {
        out.write(reinterpret_cast<const char*>(&salt), sizeof salt);
        encrypt(in, out, *cipher, *key, *digest);
    } else {
        isWhole = decrypt(values, out, *cipher, *key, *digest);
    }
    isWhole = isWhole && out.flush();
    std::cout << (isWhole ? "done\n" : "the file is damaged, or could not be written\n");
    return isWhole ? 0 : 1;
} catch (const ul::CError& error) {
    std::cerr << error.what() << "\n";
    return 1;
}
