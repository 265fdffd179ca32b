// SPDX-License-Identifier: Apache-2.0
// Reads a signed configuration, with defaults for missing values.
#include <sarn/host.h>

#include <iostream>

int main(int count, char** words) try {
    if (count != 3)
        throw std::runtime_error("usage: read_signed_config FILE.ini PUBLIC_KEY.pem");
    const sarn::CSignedConfig config(ul::path(words[1]), ul::readUTF8TextFile(ul::path(words[2])), false);
    std::cout << "cipher      " << sarn::valueOr(config, "/backup/cipher", "aes256cbc").toUTF8() << "\n"
              << "iterations  " << sarn::valueOr(config, "/backup/iterations", 100000) << "\n";
    for (const ul::String& key : sarn::getKeys(config))
        if (const auto value = sarn::findValue(config, key)) // no key reaches a section with "/" in its name
            std::cout << key.toUTF8() << " = " << value->toUTF8() << "\n";
} catch (const sarn::CSignedConfigSignatureError&) {
    std::cerr << "Somebody changed the configuration.\n";
    return 1;
} catch (const std::exception& error) {
    std::cerr << ul::formatError(error) << "\n";
    return 1;
}
