// SPDX-License-Identifier: Apache-2.0
#include <sarn/host.h>

#include <iostream>

int main() {
    const auto key = ul::makeRandomBytes(32);
    // The result is a random IV and the ciphertext.
    const auto encrypted = sarn::encrypt("aes256cbc", key, "only copy");
    const auto decrypted = sarn::decrypt("aes256cbc", key, encrypted);
    std::cout << encrypted.getUsed() << " bytes hold: " << ul::CBytes(decrypted).asText() << "\n";
}
