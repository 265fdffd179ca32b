// SPDX-License-Identifier: Apache-2.0
#include "encrypted_copy.h"

#include "host_files.h"
#include "resumed_digest.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

namespace demo {

namespace fs = std::filesystem;

namespace {

/// Writes a new file: the result of `change` for each piece of the old one, then the result of `finish`.
template <class Change, class Finish>
void convert(const fs::path& from, const fs::path& to, Change change, Finish finish) {
    constexpr int pieceSize = 1 << 16;
    ul::CWindowsFileInStream in(ul::path(from));
    std::ofstream out(to, std::ios::binary);
    ul::TBuffer<unsigned char> piece(pieceSize, -1);
    while (const int size = in.readLax(piece.getData(), pieceSize))
        out << change(ul::CBytes(piece.getData(), size)).asText();
    out << finish().asText();
    out.close();
    if (!out)
        throw std::system_error(errno, std::generic_category(), "Cannot write " + toUTF8(to));
}

} // namespace

std::string encryptFile(const ul::String& cipher, const Key& key, const fs::path& source, const fs::path& copy,
                        const Progress& progress) {
    const ul::P<sarn::IDigest> digest = sarn::createDigest(digestID);
    sarn::CStreamEncryptor encryptor(cipher, key);
    const auto encrypt = [&](ul::CBytes piece) {
        sarn::feed(*digest, piece);
        progress(static_cast<std::int64_t>(piece.size()));
        return encryptor.update(piece);
    };
    convert(source, copy, encrypt, [&] { return encryptor.finish(); });
    return ul::toHex(sarn::finish(*digest));
}

std::string decryptFile(const ul::String& cipher, const Key& key, const fs::path& copy, const fs::path& restored,
                        const Progress& progress) {
    const ul::P<sarn::IDigest> digest = sarn::createDigest(digestID);
    sarn::CStreamDecryptor decryptor(cipher, key);
    const auto pass = [&](ul::CBytes plain) {
        sarn::feed(*digest, plain);
        progress(static_cast<std::int64_t>(plain.size()));
        return plain;
    };
    convert(
        copy, restored, [&](ul::CBytes piece) { return pass(decryptor.update(piece)); },
        [&] { return pass(decryptor.finish()); });
    return ul::toHex(sarn::finish(*digest));
}

bool isSameContent(const fs::path& left, const fs::path& right) {
    std::ifstream first(left, std::ios::binary);
    std::ifstream second(right, std::ios::binary);
    using Bytes = std::istreambuf_iterator<char>;
    return first && second && std::equal(Bytes(first), Bytes(), Bytes(second), Bytes());
}

} // namespace demo
