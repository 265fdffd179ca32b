// SPDX-License-Identifier: Apache-2.0
// Files that are read into memory whole.
#pragma once

#include "errors/raise.h"

#include "ul/buffer.h"
#include "ul/path.h"

#include <climits>

namespace ul {

constexpr int largestPiece = 65536;
/// Size of the largest file that readWholeFile() accepts: a buffer must hold it and a piece beyond its end.
constexpr int largestFile = INT_MAX - largestPiece;

/// Reads all bytes of a file and replaces the content of `content` by them.
/// \throws CFileError if reading fails or the file has more than `maxSize` bytes.
void readWholeFile(const CWindowsPath& path, TBuffer<unsigned char>& content, int maxSize = largestFile);

/// Decodes UTF-8 without a byte order mark at the start.
/// \throws CError as String::fromUTF8() does.
String decodeUTF8File(const TBuffer<unsigned char>& content);

/// Runs `step`. An error about the content of the file gets the property "path".
template <class Step>
auto nameFileInErrors(const CWindowsPath& path, Step step) {
    try {
        return step();
    } catch (const CError& error) {
        raiseError(error.getMessage(), CProps(error.getProps()).add("path", path.getString()));
    }
}

} // namespace ul
