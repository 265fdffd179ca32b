// SPDX-License-Identifier: Apache-2.0
/// \file
/// Text of today's programs, which is UTF-8, and names of files. Header-only.
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

/// The text that UTF-8 stands for, where a String made of the same `const char*` would read Latin-1.
/// See String::fromUTF8().
/// \throws CError "Invalid UTF-8 text."
inline String text(std::string_view utf8) {
    return String::fromUTF8(utf8.data(), utf8.size());
}

#ifdef __cpp_char8_t
/// The same for the literals of C++20.
inline String text(std::u8string_view utf8) {
    return String::fromUTF8(reinterpret_cast<const char*>(utf8.data()), utf8.size());
}
#endif

/// An argument that takes a String, or 8-bit text, which is UTF-8.
class CText {
public:
    /// The text as it is.
    CText(const String& text) : m_text(text) {}
    /// Takes over a text.
    CText(String&& text) noexcept : m_text(std::move(text)) {}
    /// Decodes UTF-8.
    /// \throws CError "Invalid UTF-8 text."
    CText(std::string_view utf8) : m_text(ul::text(utf8)) {}
    /// The same.
    CText(const std::string& utf8) : m_text(ul::text(utf8)) {}
    /// The same for a text up to its null character.
    CText(const char* utf8) : m_text(ul::text(utf8)) {}

    /// The text.
    const String& get() const noexcept { return m_text; }

private:
    String m_text;
};

/// The path that a text in UTF-8 names by the rules of CWindowsPath.
/// \throws CError "Invalid UTF-8 text."; as CWindowsPath does
inline CWindowsPath path(std::string_view utf8) {
    return CWindowsPath(text(utf8));
}

/// Implementation of path() and native().
namespace detail {

inline constexpr const wchar_t* verbatimPrefix = L"\\\\?\\";

/// Whether the file of this absolute path is another one, or none, without the verbatim form.
inline bool needsVerbatimForm(const std::filesystem::path& native) {
    const std::filesystem::path names = native.relative_path();
    return std::any_of(names.begin(), names.end(), [](const std::filesystem::path& name) {
        const auto& characters = name.native();
        return !characters.empty() && name != "." && name != ".." &&
               (characters.back() == '.' || characters.back() == ' ');
    });
}

#ifndef _WIN32
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

/// The path of the file that the system's own path names: native() of it names the same file, ".." ahead of a symbolic
/// link excepted, which takes away the component before it as in every CWindowsPath. A relative path is below the
/// working directory.
/// \throws CBadPathError if no CWindowsPath names the file: outside Windows a name with a backslash; CError "Invalid
///         UTF-8 text." for a name that is not; std::filesystem::filesystem_error if there is no working directory
template <class Native, class = std::enable_if_t<std::is_same_v<Native, std::filesystem::path>>>
CWindowsPath path(const Native& native) {
    if (native.empty())
        throw CBadPathError("");
#ifdef _WIN32
    // Absolute already, and nothing that std::filesystem knows of.
    if (String(native.native()).StartsWith(detail::verbatimPrefix))
        return CWindowsPath(native.native());
#endif
    std::filesystem::path absolute = std::filesystem::absolute(native);
#ifdef _WIN32
    const String name = absolute.make_preferred().native();
#else
    const String name = detail::toPathText(absolute);
#endif
    const bool isVerbatim = name.StartsWith(L"\\\\");
    return CWindowsPath(!isVerbatim && detail::needsVerbatimForm(absolute) ? detail::verbatimPrefix + name : name);
}

/// The file that the operations of this library would open, for std::ifstream, std::ofstream and std::filesystem: on
/// Windows the verbatim form, elsewhere what follows `Z:`.
/// \throws CFileError as opening the file would: outside Windows for any drive but `Z:`; CError "Text cannot be encoded
///         as UTF-8."
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
