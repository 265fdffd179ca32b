// SPDX-License-Identifier: Apache-2.0
#include "files/windows/native_path.h"

#include "errors/raise.h"

#include <filesystem>

namespace ul {

std::wstring toNativePath(const CWindowsPath& path) {
    const String& text = path.getString();
    if (text.StartsWith(L"\\\\?\\"))
        return text;
    if (text.StartsWith(L"\\\\"))
        return L"\\\\?\\UNC" + text.Mid(1);
    return L"\\\\?\\" + text;
}

String getCurrentWorkDirectoryAsString() {
    std::error_code error;
    const std::filesystem::path directory = std::filesystem::current_path(error);
    if (error)
        raiseFileError("name the working directory", ".", error.value());
    return directory.native();
}

} // namespace ul
