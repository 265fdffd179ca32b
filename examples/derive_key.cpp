// SPDX-License-Identifier: Apache-2.0
// Derives a key from the password in a file. Without a salt it draws one, which a host stores with the data.
#include <sarn/host.h>

#include <iostream>

int main(int count, char** words) try {
    if (count < 2 || count > 3)
        throw std::runtime_error("usage: derive_key PASSWORD_FILE [SALT_IN_HEX]");
    const auto salt = count == 3 ? ul::fromHex(words[2]) : ul::makeRandomBytes(16);
    const auto key = sarn::deriveKey(ul::readSecretLine(ul::path(words[1])).toUTF8(), salt, 100000, 32);
    // The key is never printed. Equal keys give equal check values.
    std::cout << "salt  " << ul::toHex(salt) << "\ncheck " << sarn::base64(sarn::hmacSHA1(key, "key check")) << "\n";
} catch (const std::exception& error) {
    std::cerr << ul::formatError(error) << "\n";
    return 1;
}
