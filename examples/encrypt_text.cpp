// SPDX-License-Identifier: Apache-2.0
#include <sarn/host.h>

#include <iostream>

int main() {
    const auto key = ul::makeRandomBytes(32);
    const auto encrypted = sarn::encrypt("aes256cbc", key, "only copy"); // a random IV comes before the ciphertext
    const auto decrypted = sarn::decrypt("aes256cbc", key, encrypted);
    std::cout << encrypted.getUsed() << " bytes hold: " << ul::CBytes(decrypted).asText() << "\n";
}
