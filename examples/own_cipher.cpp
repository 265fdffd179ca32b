// SPDX-License-Identifier: Apache-2.0
// Adds a cipher to the registry, so that configurations can name it: another CBC cipher of libcrypto.
#include <sarn/host.h>

#include <openssl/evp.h>

#include <iostream>

int main() {
    const ul::P<sarn::ICipher> cipher = ul::make<sarn::COpenSSLCipher>(EVP_camellia_256_cbc(), "camellia256cbc");
    sarn::CCipherManager::get()->addCipher(cipher.get());
    std::cout << cipher->getID().toUTF8() << ": key " << cipher->getKeySize() << ", IV " << cipher->getIVSize()
              << ", block " << cipher->getBlockSize() << " bytes\n";

    // From now on every module of the process finds it by its identifier.
    const auto key = ul::makeRandomBytes(cipher->getKeySize());
    const auto encrypted = sarn::encrypt("camellia256cbc", key, "only copy");
    std::cout << ul::CBytes(sarn::decrypt("camellia256cbc", key, encrypted)).asText() << "\n";
}
