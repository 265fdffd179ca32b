// SPDX-License-Identifier: Apache-2.0
// Renames a download from FILE.part to FILE only if its signature verifies. Names are UTF-8.
#include <sarn/host.h>

#include <algorithm>
#include <iostream>

// Feeds the file to the verifier and shows the progress.
void feed(sarn::IVerifier& verifier, const ul::CWindowsPath& path) {
    ul::CWindowsFileInStream file(path);
    const std::int64_t total = std::max<std::int64_t>(file.getLength(), 1); // it may grow meanwhile
    std::int64_t done = 0;
    ul::TBuffer<unsigned char> piece(1 << 16, -1);
    while (const int size = file.readLax(piece.getData(), piece.getUsed())) {
        verifier.update(piece.getData(), size);
        done += size;
        std::cerr << "\r" << std::min<std::int64_t>(100 * done / total, 100) << " %" << std::flush;
    }
    std::cerr << "\r";
}

int main(int count, char** words) try {
    if (count != 3)
        throw std::runtime_error("usage: verify_download FILE PUBLIC_KEY.pem (with FILE.part and FILE.sig beside it)");
    const std::string file = words[1];
    const ul::CWindowsPath part = ul::path(file + ".part");
    // A renamed link could lead to another file later. Nobody else may write to the folder meanwhile.
    if (std::filesystem::is_symlink(ul::native(part)))
        throw std::runtime_error("It is a link: " + file + ".part");
    ul::TBuffer<unsigned char> signature;
    sarn::loadSignatureBase64(ul::path(file + ".sig"), signature);
    const auto verifier = sarn::createRSA_SHA1()->beginVerify(ul::readUTF8TextFile(ul::path(words[2])));
    feed(*verifier, part);
    if (!verifier->finish(signature))
        throw std::runtime_error("The signature is not one of this file. It stays " + file + ".part.");
    // Only now: a file under its final name is a verified one.
    std::filesystem::rename(ul::native(part), ul::native(ul::path(file)));
    std::cout << "verified: " << file << "\n";
} catch (const std::exception& error) {
    std::cerr << ul::formatError(error) << "\n";
    return 1;
}
