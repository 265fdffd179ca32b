// SPDX-License-Identifier: Apache-2.0
#include "files/whole_file.h"

#include "errors/raise.h"
#include "files/file_handle.h"
#include "random/system_random.h"

#include "ul/file.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace ul {

namespace {

constexpr int smallestPiece = 4096;

void checkSize(const CWindowsPath& path, std::int64_t size, int maxSize) {
    if (size <= maxSize)
        return;
    const String reason = maxSize < largestFile ? "it is larger than " + toString(maxSize) + " bytes"
                                                : String("it is too large to be held in memory");
    raiseFileError("read file", path.getString(), reason);
}

} // namespace

void readWholeFile(const CWindowsPath& path, TBuffer<unsigned char>& content, int maxSize) {
    CWindowsFileInStream stream(path);
    content.setUsed(0);
    while (!stream.isEndOfStream()) {
        // Neither number can be trusted alone: some files are generated as they are read, and others grow.
        const std::int64_t length = stream.getLength();
        checkSize(path, length, maxSize);
        const auto piece =
            static_cast<int>(std::clamp<std::int64_t>(length - content.getUsed(), smallestPiece, largestPiece));
        content.ensureAllocated(content.getUsed() + piece);
        content.addUsed(stream.readLax(content.getData() + content.getUsed(), piece));
        checkSize(path, content.getUsed(), maxSize);
    }
}

String decodeUTF8File(const TBuffer<unsigned char>& content) {
    std::string_view utf8(reinterpret_cast<const char*>(content.getData()),
                          static_cast<std::size_t>(content.getUsed()));
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (utf8.substr(0, byteOrderMark.size()) == byteOrderMark)
        utf8.remove_prefix(byteOrderMark.size());
    return String::fromUTF8(utf8.data(), utf8.size());
}

String readUTF8TextFile(const TPathImpl<CWindowsPathTraits>& path) {
    return readUTF8TextFile(path, largestFile);
}

String readUTF8TextFile(const TPathImpl<CWindowsPathTraits>& path, int maxSize) {
    if (maxSize < 0)
        raiseInvalidArg("readUTF8TextFile", "invalid size");
    // Wiped, because the text may be a private key.
    TCryptBuffer<unsigned char> content;
    readWholeFile(path, content, std::min(maxSize, largestFile));
    return nameFileInErrors(path, [&] { return decodeUTF8File(content); });
}

void writeUTF8TextFile(const TPathImpl<CWindowsPathTraits>& path, const String& text) {
    replaceFile(path, text.toUTF8());
}

String makeTemporaryName() {
    std::array<unsigned char, 8> random;
    fillFromSystemGenerator(random.data(), random.size());
    String name = "~";
    for (const unsigned char byte : random)
        name += toHexString(byte);
    return name + ".tmp";
}

String decodeUTF8(const TBuffer<unsigned char>& content, const TPathImpl<CWindowsPathTraits>& path) {
    return nameFileInErrors(path, [&] {
        return String::fromUTF8(reinterpret_cast<const char*>(content.getData()),
                                static_cast<std::size_t>(content.getUsed()));
    });
}

} // namespace ul
