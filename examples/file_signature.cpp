// SPDX-License-Identifier: Apache-2.0
// Signs a file, or verifies it with the signature beside it.
#include <sarn/sarn.h>

#include <iostream>
#include <string>

namespace {

ul::CWindowsPath toPath(const std::string& text) {
    return ul::CWindowsPath(ul::String::fromUTF8(text.data(), text.size()));
}

// A text that may be a private key; nothing of it is left in memory.
struct KeyText {
    ul::String text;
    ~KeyText() { ul::wipe(text); }
};

} // namespace

int main(int count, char** words) {
    if (count != 4) {
        std::cerr << "usage: file_signature sign|verify FILE KEY.pem\n";
        return 2;
    }
    try {
        const std::string file = words[2];
        const KeyText key{ul::readUTF8TextFile(toPath(words[3]))};
        if (std::string(words[1]) == "sign") {
            ul::TBuffer<unsigned char> signature;
            sarn::createFileSignature_RSA_SHA1(toPath(file), key.text, signature);
            sarn::storeSignatureBase64(toPath(file + ".sig"), signature);
            std::cout << "signed\n";
            return 0;
        }
        const bool isRight = sarn::verifyFileSignature_RSA_SHA1(toPath(file), key.text, toPath(file + ".sig"));
        std::cout << (isRight ? "the signature is right\n" : "the signature is WRONG\n");
        return isRight ? 0 : 1;
    } catch (const ul::CError& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
