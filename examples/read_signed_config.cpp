// SPDX-License-Identifier: Apache-2.0
#include <sarn/sarn.h>

#include <iostream>
#include <string>

ul::CWindowsPath toPath(const std::string& text) {
    return ul::CWindowsPath(ul::String::fromUTF8(text.data(), text.size()));
}

int main(int count, char** words) {
    if (count != 3) {
        std::cerr << "usage: read_signed_config FILE.ini PUBLIC_KEY.pem\n";
        return 2;
    }
    try {
        const ul::String publicKey = ul::readUTF8TextFile(toPath(words[2]));
        sarn::CSignedConfig config(toPath(words[1]), publicKey, false);
        ul::TArray<ul::String> keys;
        config.getValueNamesWithPrefix(keys, "/");
        ul::String value;
        for (const ul::String& key : keys) {
            if (config.getValue(key, value)) // not those of a section with "/" in its name, which no key reaches
                std::cout << key.toUTF8() << " = " << value.toUTF8() << "\n";
        }
        return 0;
    } catch (const sarn::CSignedConfigSignatureError&) {
        std::cerr << "Somebody changed the configuration.\n";
    } catch (const ul::CError& error) {
        std::cerr << error.what() << "\n";
    }
    return 1;
}
