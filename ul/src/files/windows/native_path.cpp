// SPDX-License-Identifier: Apache-2.0
#include "files/windows/native_path.h"

#include "errors/raise.h"

#include <array>

#include <windows.h>

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
    std::array<wchar_t, 32768> directory; // no path is longer
    const DWORD length = ::GetCurrentDirectoryW(static_cast<DWORD>(directory.size()), directory.data());
    if (length == 0)
        raiseFileError("name the working directory", ".", static_cast<int>(::GetLastError()));
    return String(directory.data(), length);
}

} // namespace ul
