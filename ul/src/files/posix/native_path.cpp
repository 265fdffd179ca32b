// SPDX-License-Identifier: Apache-2.0
#include "files/posix/native_path.h"

#include "errors/raise.h"
#include "text/utf8_text.h"

#include <algorithm>
#include <filesystem>

namespace ul {

namespace {

constexpr const wchar_t* rootDrive = L"Z:";
constexpr const wchar_t* verbatimPrefix = L"\\\\?\\";

/// Whether normalising the components would make the path name another file.
bool changesWhenNormalized(const std::wstring& text) {
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find(L'\\', start), text.size());
        const String component = text.substr(start, end - start);
        if (CWindowsPathTraits::normalizeComponent(component) != component)
            return true;
        start = end + 1;
    }
    return false;
}

} // namespace

std::string toNativePath(const String& operation, const CWindowsPath& path) {
    String text = path.getString();
    if (text.StartsWith(verbatimPrefix))
        text = text.Mid(4);
    if (!text.StartsWith(L"Z:\\"))
        raiseFileError(operation, path.getString(), "only drive Z: exists on this system, it stands for /");
    std::wstring native = text.Mid(2);
    std::replace(native.begin(), native.end(), L'\\', L'/');
    try {
        return encodeUTF8(native);
    } catch (const CError&) {
        raiseFileError(operation, path.getString(), "its name is no valid Unicode text");
    }
}

String getCurrentWorkDirectoryAsString() {
    const String operation = "name the working directory";
    std::error_code error;
    std::string native = std::filesystem::current_path(error).native();
    if (error)
        raiseFileError(operation, ".", error.value());
    if (native.find('\\') != std::string::npos)
        raiseFileError(operation, decodeUTF8OrLatin1(native), "a name contains a backslash");
    std::replace(native.begin(), native.end(), '/', '\\');
    String text;
    try {
        text = rootDrive + decodeUTF8(native.data(), native.size());
    } catch (const CError&) {
        raiseFileError(operation, decodeUTF8OrLatin1(native), "its name is no valid UTF-8");
    }
    return changesWhenNormalized(text) ? verbatimPrefix + text : text;
}

} // namespace ul
