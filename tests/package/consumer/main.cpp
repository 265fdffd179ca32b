// SPDX-License-Identifier: Apache-2.0
// Uses a type of each library across the boundary and ends with status 0 if all is well.
#include <sarn/sarn.h>

#include <cstring>

int main() {
    ul::TCryptBuffer<unsigned char> key(32, -1);
    std::memset(key.getData(), 7, 32);
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher("aes256cbc");
    ul::TBuffer<unsigned char> encrypted;
    ul::TBuffer<unsigned char> decrypted;
    cipher->encrypt(key, "text", 4, encrypted, false, nullptr);
    cipher->decrypt(key, encrypted.getData(), encrypted.getUsed(), decrypted, false, nullptr);
    if (decrypted.getUsed() != 4 || std::memcmp(decrypted.getData(), "text", 4) != 0)
        return 1;
    try {
        cipher->decrypt(key, "short", 5, decrypted, false, nullptr);
    } catch (const ul::CInvalidArgError& error) {
        return error.getMessage() == "invalid input data size" ? 0 : 2;
    }
    return 3;
}
