// SPDX-License-Identifier: Apache-2.0
// Signs a file with an encrypted private key, whose pass phrase is the first line of a file; the signature lies beside.
#include <sarn/host.h>

#include <iostream>

int main(int count, char** words) try {
    if (count != 4)
        throw std::runtime_error("usage: host_sign FILE KEY.pem PASS_PHRASE_FILE");
    const ul::CWindowsPath file = ul::path(words[1]);
    const ul::CSecretText key = ul::readSecretTextFile(ul::path(words[2]));
    const auto signature = sarn::signFile(file, key, ul::readSecretLine(ul::path(words[3])));
    sarn::storeSignatureBase64(ul::CWindowsPath(file.getString() + ".sig"), signature);
    std::cout << "signed, " << signature.getUsed() << " bytes\n";
} catch (const std::exception& error) {
    std::cerr << ul::formatError(error) << "\n";
    return 1;
}
