// SPDX-License-Identifier: Apache-2.0
// Adds a cipher to the registry, so that configurations can name it: another CBC cipher of libcrypto.
#include <sarn/sarn.h>

#include <openssl/evp.h>

#include <iostream>

int main() {
    const ul::P<sarn::CCipherManager> ciphers = sarn::CCipherManager::get();
    const ul::P<sarn::ICipher> camellia = ul::make<sarn::COpenSSLCipher>(EVP_camellia_256_cbc(), "camellia256cbc");
    ciphers->addCipher(camellia.get());

    // From here on it is one of them, for every module of the process.
    const ul::P<sarn::ICipher> cipher = ciphers->getCipher("camellia256cbc");
    std::cout << cipher->getID().toUTF8() << ": key " << cipher->getKeySize() << ", IV " << cipher->getIVSize()
              << ", block " << cipher->getBlockSize() << " bytes\n";

    ul::TCryptBuffer<unsigned char> key(cipher->getKeySize(), -1);
    ul::CMTRand::getGlobal()->randData(key.getData(), key.getUsed());
    ul::TBuffer<unsigned char> encrypted;
    ul::TBuffer<unsigned char> decrypted;
    cipher->encrypt(key, "only copy", 9, encrypted, false, nullptr);
    cipher->decrypt(key, encrypted.getData(), encrypted.getUsed(), decrypted, false, nullptr);
    std::cout.write(reinterpret_cast<const char*>(decrypted.getData()), decrypted.getUsed()) << "\n";
}
