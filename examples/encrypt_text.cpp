// SPDX-License-Identifier: Apache-2.0
#include <sarn/sarn.h>

#include <iostream>

int main() {
    ul::TCryptBuffer<unsigned char> key(32, -1);
    ul::CMTRand::getGlobal()->randData(key.getData(), key.getUsed());

    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher("aes256cbc");
    ul::TBuffer<unsigned char> encrypted;
    cipher->encrypt(key, "only copy", 9, encrypted, false, nullptr); // a random IV goes ahead of the ciphertext

    ul::TBuffer<unsigned char> decrypted;
    cipher->decrypt(key, encrypted.getData(), encrypted.getUsed(), decrypted, false, nullptr);
    std::cout << encrypted.getUsed() << " bytes hold: ";
    std::cout.write(reinterpret_cast<const char*>(decrypted.getData()), decrypted.getUsed()) << "\n";
}
