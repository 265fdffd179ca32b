// SPDX-License-Identifier: Apache-2.0
// Files that are small enough to be held in memory.
#pragma once

#include "errors/raise.h"

#include "ul/buffer.h"
#include "ul/path.h"

#include <climits>

namespace ul {

constexpr int largestPiece = 65536;
/// The size of the largest file that readWholeFile() takes: a buffer has room for it and for a piece beyond its end.
constexpr int largestFile = INT_MAX - largestPiece;

/// Reads all bytes of a file into `content`, in place of what it held.
/// \throws CFileError if that fails or there are more than `maxSize`.
void readWholeFile(const CWindowsPath& path, TBuffer<unsigned char>& content, int maxSize = largestFile);

/// Decodes UTF-8, leaving out a byte order mark at the start.
/// \throws CError as String::fromUTF8() does.
String decodeUTF8File(const TBuffer<unsigned char>& content);

/// Runs `step`, and adds the property "path" to an error about the content of that file.
template <class Step>
auto nameFileInErrors(const CWindowsPath& path, Step step) {
    try {
        return step();
    } catch (const CError& error) {
        raiseError(error.getMessage(), CProps(error.getProps()).add("path", path.getString()));
    }
}

} // namespace ul
