// SPDX-License-Identifier: Apache-2.0
// Takes over a downloaded file only if its signature verifies: FILE.part becomes FILE. Names are UTF-8.
#include <sarn/sarn.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace fs = std::filesystem;
using Bytes = ul::TBuffer<unsigned char>;

ul::CWindowsPath toPath(const std::string& text) {
    return ul::CWindowsPath(ul::String::fromUTF8(text.data(), text.size()));
}

// The file that the library opens for a path. The system may find another one under the text that the path was made
// from: outside Windows it takes a backslash for part of a name, and goes through links before it goes up by "..".
fs::path toNative(const ul::CWindowsPath& path) {
#ifdef _WIN32
    return path.getString().toStdWString();
#else
    std::string text = path.getString().toUTF8();
    if (text.compare(0, 3, "Z:\\") != 0)
        throw std::runtime_error("Only drive Z: exists on this system.");
    std::replace(text.begin(), text.end(), '\\', '/');
    return text.substr(2);
#endif
}

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

void takeOver(const std::string& file, const std::string& keyFile) {
    const ul::CWindowsPath part = toPath(file + ".part");
    // Renaming a link would take over whatever it leads to by then. Nobody else may write to the folder meanwhile.
    if (fs::is_symlink(toNative(part)))
        throw std::runtime_error("It is a link: " + file + ".part");
    Bytes signature;
    sarn::loadSignatureBase64(toPath(file + ".sig"), signature);
    const ul::P<sarn::IVerifier> verifier = sarn::createRSA_SHA1()->beginVerify(ul::readUTF8TextFile(toPath(keyFile)));
    feed(*verifier, part);
    if (!verifier->finish(signature))
        throw std::runtime_error("The signature is not one of this file. It stays " + file + ".part.");
    fs::rename(toNative(part), toNative(toPath(file))); // never before: nobody must take what is not verified
}

int main(int count, char** words) {
    if (count != 3) {
        std::cerr << "usage: verify_download FILE PUBLIC_KEY.pem (with FILE.part and FILE.sig beside it)\n";
        return 2;
    }
    try {
        takeOver(words[1], words[2]);
        std::cout << "verified: " << words[1] << "\n";
        return 0;
    } catch (const std::exception& error) { // the library's errors are standard exceptions, too
        std::cerr << error.what() << "\n";
        return 1;
    }
}
