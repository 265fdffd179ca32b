// SPDX-License-Identifier: Apache-2.0
// Encrypts a file with a password, or decrypts it again. An encrypted file is a salt, then pieces: size, whether it is
// the last one, IV and ciphertext, and an HMAC over the piece's number and all of that. Names are UTF-8.
#include <sarn/sarn.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

namespace fs = std::filesystem;
using Bytes = ul::TBuffer<unsigned char>;
using Key = ul::TCryptBuffer<unsigned char>;

constexpr int pieceSize = 1 << 20;
constexpr int macSize = 20;

unsigned long long toNumber(const unsigned char (&salt)[8]) {
    unsigned long long number = 0;
    for (int i = 0; i < 8; ++i)
        number |= static_cast<unsigned long long>(salt[i]) << (8 * i);
    return number;
}

// Each file has a salt of its own, and so keys of its own: no piece of another file fits.
class PieceCipher {
public:
    PieceCipher(const char* password, unsigned long long salt) {
        ul::TCryptBuffer<char> text;
        text.init(password, static_cast<int>(std::strlen(password)));
        const int size = m_cipher->getKeySize();
        const ul::PC<Key> both = ul::make<sarn::CPasswordKeyCache>(text)->getKey(2 * size, salt, 100000);
        m_key.init(both->getData(), size);
        m_macKey.init(both->getData() + size, size);
    }

    void encrypt(const Bytes& plain, bool isLast, Bytes& piece, Bytes& mac) {
        m_cipher->encrypt(m_key, plain.getData(), plain.getUsed(), piece, false, nullptr);
        authenticate(piece, isLast, mac);
    }

    // Nothing is decrypted that was cut, moved, or changed.
    void decrypt(const Bytes& piece, bool isLast, const unsigned char* mac, Bytes& plain) {
        Bytes expected;
        authenticate(piece, isLast, expected);
        int difference = 0; // takes as long whichever byte differs
        for (int i = 0; i < macSize; ++i)
            difference |= mac[i] ^ expected.getData()[i];
        if (difference != 0)
            throw std::runtime_error("The password is wrong, or the file is damaged.");
        m_cipher->decrypt(m_key, piece.getData(), piece.getUsed(), plain, false, nullptr);
    }

private:
    void authenticate(const Bytes& piece, bool isLast, Bytes& mac) {
        Bytes text;
        ul::CBufferStream stream(&text, 2.0);
        ul::CDataOutStream(stream).writeInt32(m_number++).writeBool(isLast).write(piece.getData(), piece.getUsed());
        sarn::calcHMAC_SHA1(mac, text.getData(), text.getUsed(), m_macKey.getData(), m_macKey.getUsed());
    }

    const ul::P<sarn::ICipher> m_cipher = sarn::CCipherManager::get()->getCipher("aes256cbc");
    Key m_key;
    Key m_macKey;
    int m_number = 0;
};

void encrypt(ul::IInStream& in, std::ostream& out, const char* password) {
    unsigned char salt[8]; // not a secret, but another one for every file
    ul::CMTRand::getGlobal()->randData(salt, sizeof salt);
    out.write(reinterpret_cast<const char*>(salt), sizeof salt);
    PieceCipher cipher(password, toNumber(salt));
    Bytes plain, piece, mac, record;
    bool isLast = false;
    while (!isLast) {
        plain.setUsed(pieceSize);
        plain.setUsed(in.readLax(plain.getData(), pieceSize));
        isLast = in.isEndOfStream();
        cipher.encrypt(plain, isLast, piece, mac);
        record.setUsed(0);
        ul::CBufferStream stream(&record, 2.0);
        ul::CDataOutStream(stream).writeInt32(piece.getUsed()).writeBool(isLast);
        record.insert(record.getUsed(), piece.getData(), piece.getUsed());
        record.insert(record.getUsed(), mac.getData(), macSize);
        out.write(reinterpret_cast<const char*>(record.getData()), record.getUsed());
    }
}

void decrypt(ul::IInStream& in, std::ostream& out, const char* password) {
    ul::CDataInStream values(in);
    unsigned char salt[8], mac[macSize];
    values.read(salt, sizeof salt);
    PieceCipher cipher(password, toNumber(salt));
    Bytes piece, plain;
    bool isLast = false;
    while (!isLast) {
        const int size = values.readInt32();
        values.readBool(isLast);
        if (size < 0 || size > pieceSize + 64) // what nobody has verified yet decides no allocation
            throw std::runtime_error("The file is damaged.");
        piece.setUsed(size);
        values.read(piece.getData(), size);
        values.read(mac, macSize);
        cipher.decrypt(piece, isLast, mac, plain);
        out.write(reinterpret_cast<const char*>(plain.getData()), plain.getUsed());
    }
    if (!in.isEndOfStream())
        throw std::runtime_error("Something follows the end of the encrypted file.");
}

void run(const std::string& command, const std::string& from, const std::string& to, const char* password) {
    ul::CWindowsFileInStream in{ul::CWindowsPath(ul::String::fromUTF8(from.data(), from.size()))};
    const fs::path part = fs::u8path(to + ".part"); // TO is there when it is whole
    std::ofstream out(part, std::ios::binary);
    if (command == "encrypt")
        encrypt(in, out, password);
    else if (command == "decrypt")
        decrypt(in, out, password);
    else
        throw std::runtime_error("The first argument is encrypt or decrypt.");
    out.close();
    if (!out)
        throw std::runtime_error("Cannot write " + to + ".part");
    fs::rename(part, fs::u8path(to));
}

int main(int count, char** words) {
    if (count != 5) {
        std::cerr << "usage: encrypt_file encrypt|decrypt FROM TO PASSWORD\n";
        return 2;
    }
    try {
        run(words[1], words[2], words[3], words[4]);
        return 0;
    } catch (const std::exception& error) { // the library's errors are standard exceptions, too
        std::cerr << error.what() << "\n";
        return 1;
    }
}
