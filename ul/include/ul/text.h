// SPDX-License-Identifier: Apache-2.0
/// \file
/// UTF-8 text, and names of files. Header-only.
#pragma once

#include "ul/error.h"
#include "ul/path.h"
#include "ul/string.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ul {

/// Decodes UTF-8. (A String constructed from a `const char*` reads Latin-1 instead.) See String::fromUTF8().
/// \throws CError "Invalid UTF-8 text.".
inline String text(std::string_view utf8) {
    return String::fromUTF8(utf8.data(), utf8.size());
}

#ifdef __cpp_char8_t
/// Decodes a UTF-8 literal of C++20.
inline String text(std::u8string_view utf8) {
    return String::fromUTF8(reinterpret_cast<const char*>(utf8.data()), utf8.size());
}
#endif

/// A parameter type that accepts a String, or 8-bit text in UTF-8.
class CText {
public:
    /// Copies a text.
    CText(const String& text) : m_text(text) {}
    /// Takes a text.
    CText(String&& text) noexcept : m_text(std::move(text)) {}
    /// Decodes UTF-8.
    /// \throws CError "Invalid UTF-8 text."
    CText(std::string_view utf8) : m_text(ul::text(utf8)) {}
    /// Decodes UTF-8.
    CText(const std::string& utf8) : m_text(ul::text(utf8)) {}
    /// Decodes null-terminated UTF-8.
    CText(const char* utf8) : m_text(ul::text(utf8)) {}

    /// The text.
    const String& get() const noexcept { return m_text; }

private:
    String m_text;
};

/// Parses a path in UTF-8 by the rules of CWindowsPath.
/// \throws CError "Invalid UTF-8 text."; as CWindowsPath does.
inline CWindowsPath path(std::string_view utf8) {
    return CWindowsPath(text(utf8));
}

/// Implementation of path() and native().
namespace detail {

/// Start of the verbatim form of a path.
inline constexpr const wchar_t* verbatimPrefix = L"\\\\?\\";

/// Whether only the verbatim form names the file of this absolute path.
inline bool needsVerbatimForm(const std::filesystem::path& native) {
    const std::filesystem::path names = native.relative_path();
    return std::any_of(names.begin(), names.end(), [](const std::filesystem::path& name) {
        const auto& characters = name.native();
        return !characters.empty() && name != "." && name != ".." &&
               (characters.back() == '.' || characters.back() == ' ');
    });
}

#ifndef _WIN32
/// The text of a CWindowsPath for an absolute path of the operating system.
inline String toPathText(const std::filesystem::path& native) {
    const std::string& name = native.native();
    if (name.find('\\') != std::string::npos)
        throw CBadPathError(String(name.data(), name.size()));
    std::wstring characters = text(name).toStdWString();
    std::replace(characters.begin(), characters.end(), L'/', L'\\');
    return L"Z:" + characters;
}
#endif

} // namespace detail

/// Converts a path of the operating system: native() of the result names the same file, unless ".." follows a symbolic
/// link, because in a CWindowsPath ".." removes the component before it. A relative path is resolved against the
/// working directory.
/// \throws CBadPathError if no CWindowsPath can name the file: outside Windows a name with a backslash, and a path with
///         ".." above the root; CError "Invalid UTF-8 text." for a name that is not UTF-8;
///         std::filesystem::filesystem_error if there is no working directory.
template <class Native, class = std::enable_if_t<std::is_same_v<Native, std::filesystem::path>>>
CWindowsPath path(const Native& native) {
    if (native.empty())
        throw CBadPathError("");
#ifdef _WIN32
    // Such a path is absolute, but std::filesystem does not know this form.
    if (String(native.native()).StartsWith(detail::verbatimPrefix))
        return CWindowsPath(native.native());
#endif
    std::filesystem::path absolute = std::filesystem::absolute(native);
#ifdef _WIN32
    const String name = absolute.make_preferred().native();
#else
    const String name = detail::toPathText(absolute);
#endif
    const bool isOnDrive = !name.StartsWith(L"\\\\");
    const bool needsPrefix = isOnDrive && detail::needsVerbatimForm(absolute);
    return CWindowsPath(needsPrefix ? detail::verbatimPrefix + name : name);
}

/// Converts a path for std::ifstream, std::ofstream and std::filesystem, naming the file that this library would open:
/// the verbatim form on Windows, the part after `Z:` elsewhere.
/// \throws CFileError as opening the file would: outside Windows for any drive but `Z:`; CError "Text cannot be encoded
///         as UTF-8.".
inline std::filesystem::path native(const CWindowsPath& path) {
    const String& name = path.getString();
    const bool isVerbatim = name.StartsWith(detail::verbatimPrefix);
#ifdef _WIN32
    if (isVerbatim)
        return name.toStdWString();
    const bool isShare = name.StartsWith(L"\\\\");
    return (isShare ? L"\\\\?\\UNC" + name.Mid(1) : detail::verbatimPrefix + name).toStdWString();
#else
    const String onDrive = isVerbatim ? name.Mid(4) : name;
    if (!onDrive.StartsWith(L"Z:\\"))
        throw CFileError("name file", name, "only drive Z: exists on this system, it stands for /", -1);
    std::string characters = onDrive.Mid(2).toUTF8();
    std::replace(characters.begin(), characters.end(), '\\', '/');
    return characters;
#endif
}

} // namespace ul
