// SPDX-License-Identifier: Apache-2.0
#include <sarn/sarn.h>

#include <iostream>

int main(int count, char** words) {
    if (count != 3) {
        std::cerr << "usage: read_signed_config FILE.ini PUBLIC_KEY.pem\n";
        return 2;
    }
    try {
        const ul::String publicKey = ul::readUTF8TextFile(ul::CWindowsPath(words[2]));
        sarn::CSignedConfig config(ul::CWindowsPath(words[1]), publicKey, false);
        ul::TArray<ul::String> keys;
        config.getValueNamesWithPrefix(keys, "/");
        for (const ul::String& key : keys)
            std::cout << key.toUTF8() << " = " << config.getValue(key).toUTF8() << "\n";
        return 0;
    } catch (const sarn::CSignedConfigSignatureError&) {
        std::cerr << "Somebody changed the configuration.\n";
    } catch (const ul::CError& error) {
        std::cerr << error.what() << "\n";
    }
    return 1;
}
