// SPDX-License-Identifier: Apache-2.0
#include "encrypted_copy.h"

#include "host_files.h"

#include <fstream>
#include <system_error>

namespace demo {

namespace {

constexpr int chunkSize = 1 << 20;
// What the ciphers add to a chunk at most: an IV and a block of padding.
constexpr int chunkOverhead = 64;

using Buffer = ul::TBuffer<unsigned char>;

/// Opens a file or throws the system's reason.
template <class Stream>
Stream open(const std::filesystem::path& path) {
    Stream stream(path, std::ios::binary);
    if (!stream)
        throw std::system_error(errno, std::generic_category(), "Cannot open " + path.string());
    return stream;
}

/// Fills `buffer` with up to `size` bytes of `stream`.
void readUpTo(std::istream& stream, Buffer& buffer, int size) {
    buffer.ensureAllocated(size);
    stream.read(reinterpret_cast<char*>(buffer.getData()), size);
    buffer.setUsed(static_cast<int>(stream.gcount()));
}

void write(std::ostream& stream, const Buffer& buffer) {
    stream.write(reinterpret_cast<const char*>(buffer.getData()), buffer.getUsed());
}

void finish(std::ofstream& stream, const std::filesystem::path& path) {
    stream.close();
    if (!stream)
        throw std::system_error(errno, std::generic_category(), "Cannot write " + path.string());
}

void readChunk(ul::CDataInStream& in, bool& isLast, Buffer& encrypted) {
    in.readBool(isLast);
    const int size = in.readInt32();
    if (size < 0 || size > chunkSize + chunkOverhead)
        throw ul::CError("The encrypted copy is damaged.", "", -1, ul::CProps().add("chunkSize", ul::toString(size)),
                         nullptr);
    encrypted.setUsed(size);
    in.read(encrypted.getData(), size);
}

} // namespace

std::int64_t encryptFile(sarn::ICipher& cipher, const Key& key, sarn::IDigest& digest,
                         const std::filesystem::path& source, const std::filesystem::path& copy,
                         const Progress& progress) {
    std::ifstream in = open<std::ifstream>(source);
    std::ofstream out = open<std::ofstream>(copy);
    std::int64_t written = 0;
    Buffer plain;
    Buffer chunk;
    bool isLast = false;
    while (!isLast) {
        readUpTo(in, plain, chunkSize);
        isLast = plain.getUsed() < chunkSize;
        digest.update(plain.getData(), plain.getUsed());

        Buffer encrypted;
        cipher.encrypt(key, plain.getData(), plain.getUsed(), encrypted, false, nullptr);

        chunk.setUsed(0);
        ul::CBufferStream stream(&chunk, 2.0);
        ul::CDataOutStream(stream)
            .writeBool(isLast)
            .writeInt32(encrypted.getUsed())
            .write(encrypted.getData(), encrypted.getUsed());
        write(out, chunk);
        written += chunk.getUsed();
        progress(plain.getUsed());
    }
    finish(out, copy);
    digest.finish();
    return written;
}

void decryptFile(sarn::ICipher& cipher, const Key& key, sarn::IDigest& digest, const std::filesystem::path& copy,
                 const std::filesystem::path& restored, const Progress& progress) {
    ul::CWindowsFileInStream file(toPath(copy));
    ul::CDataInStream stream(file);
    std::ofstream out = open<std::ofstream>(restored);
    Buffer encrypted;
    Buffer plain;
    bool isLast = false;
    while (!isLast) {
        readChunk(stream, isLast, encrypted);
        cipher.decrypt(key, encrypted.getData(), encrypted.getUsed(), plain, false, nullptr);
        digest.update(plain.getData(), plain.getUsed());
        write(out, plain);
        progress(plain.getUsed());
    }
    digest.finish();
    finish(out, restored);
}

bool isSameContent(const std::filesystem::path& left, const std::filesystem::path& right) {
    std::ifstream first = open<std::ifstream>(left);
    std::ifstream second = open<std::ifstream>(right);
    Buffer a;
    Buffer b;
    do {
        readUpTo(first, a, chunkSize);
        readUpTo(second, b, chunkSize);
        if (a.getUsed() != b.getUsed() || !std::equal(a.getData(), a.getData() + a.getUsed(), b.getData()))
            return false;
    } while (a.getUsed() > 0);
    return true;
}

} // namespace demo
