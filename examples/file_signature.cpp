// SPDX-License-Identifier: Apache-2.0
// Signs a file, or verifies it with the signature beside it. The passphrase of a key is the first line of a file.
#include <sarn/host.h>

#include <iostream>

int main(int count, char** words) try {
    const std::string command = count == 4 || count == 5 ? words[1] : "";
    if (command != "sign" && command != "verify")
        throw std::runtime_error("usage: file_signature sign|verify FILE KEY.pem [PASS_PHRASE_FILE]");
    const ul::CWindowsPath file = ul::path(words[2]);
    const ul::CWindowsPath signatureFile(file.getString() + ".sig");
    const ul::CSecretText key = ul::readSecretTextFile(ul::path(words[3]));
    if (command == "verify") {
        const bool isRight = sarn::verifyFileSignature_RSA_SHA1(file, key, signatureFile);
        std::cout << (isRight ? "the signature is right\n" : "the signature is WRONG\n");
        return isRight ? 0 : 1;
    }
    const auto passPhrase = count == 5 ? ul::readSecretLine(ul::path(words[4])) : ul::CSecretText("");
    const auto signature = sarn::signFile(file, key, passPhrase);
    sarn::storeSignatureBase64(signatureFile, signature);
    std::cout << "signed, " << signature.getUsed() << " bytes\n";
} catch (const std::exception& error) {
    std::cerr << ul::formatError(error) << "\n";
    return 1;
}
