// SPDX-License-Identifier: Apache-2.0
// Uses types of both libraries. The status is 0 if all results are right.
#include <sarn/sarn.h>

#include <cstring>
#include <iostream>

#if SARN_VERSION < 10000
#error "the preprocessor does not see the version"
#endif
#if defined(CONSUMER_STANDARD)
static_assert(__cplusplus == (CONSUMER_STANDARD == 17 ? 201703L : 202002L), "not the C++ that was asked for");
#endif

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
        return 2;
    } catch (const ul::CInvalidArgError& error) {
        if (error.getMessage() != "invalid input data size")
            return 3;
    }
    if (sarn::getVersion() != SARN_VERSION || ul::getVersion() != UL_VERSION)
        return 4;
    std::cout << "sarn " << sarn::getVersionText() << " with " << sarn::getLibcryptoVersionText() << "\n";
}
