// SPDX-License-Identifier: Apache-2.0
// Takes over a downloaded file only if its signature verifies: FILE.part becomes FILE.
#include <sarn/sarn.h>

#include <algorithm>
#include <filesystem>
#include <iostream>

using Bytes = ul::TBuffer<unsigned char>;

// Feeds the file to the verifier while it shows how far it is; reading it twice would take twice as long.
void feed(sarn::IVerifier& verifier, const ul::CWindowsPath& path) {
    ul::CWindowsFileInStream file(path);
    const std::int64_t total = std::max<std::int64_t>(file.getLength(), 1); // it may grow meanwhile
    std::int64_t done = 0;
    Bytes piece(1 << 16, -1);
    while (const int size = file.readLax(piece.getData(), piece.getUsed())) {
        verifier.update(piece.getData(), size);
        done += size;
        std::cerr << "\r" << std::min<std::int64_t>(100 * done / total, 100) << " %" << std::flush;
    }
    std::cerr << "\r";
}

int main(int count, char** words) {
    if (count != 3) {
        std::cerr << "usage: verify_download FILE PUBLIC_KEY.pem (with FILE.part and FILE.sig beside it)\n";
        return 2;
    }
    try {
        const std::string file = words[1];
        const std::string part = file + ".part";
        const ul::String publicKey = ul::readUTF8TextFile(ul::CWindowsPath(ul::String(words[2])));
        Bytes signature;
        sarn::loadSignatureBase64(ul::CWindowsPath(ul::String((file + ".sig").c_str())), signature);

        const ul::P<sarn::IVerifier> verifier = sarn::createRSA_SHA1()->beginVerify(publicKey);
        feed(*verifier, ul::CWindowsPath(ul::String(part.c_str())));
        if (!verifier->finish(signature)) {
            std::cerr << "The signature is not one of this file. It stays " << part << ".\n";
            return 1;
        }
        std::filesystem::rename(part, file); // never before: nobody must take what is not verified
        std::cout << "verified: " << file << "\n";
        return 0;
    } catch (const std::exception& error) { // the library's errors are standard exceptions, too
        std::cerr << error.what() << "\n";
        return 1;
    }
}
