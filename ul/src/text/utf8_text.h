// SPDX-License-Identifier: Apache-2.0
// UTF-8 to and from wide characters of either width.
#pragma once

#include "ul/string.h"

#include <cstdint>
#include <string>
#include <type_traits>

namespace ul {

/// The code unit of a character, whether or not wchar_t is signed.
constexpr std::uint32_t toCodeUnit(wchar_t character) {
    return static_cast<std::make_unsigned_t<wchar_t>>(character);
}

/// As String::fromUTF8().
String decodeUTF8(const char* data, std::size_t size);

/// Decodes UTF-8, or Latin-1 if the text is not valid UTF-8.
String decodeUTF8OrLatin1(const std::string& text);

/// As String::toUTF8().
std::string encodeUTF8(const std::wstring& text);

/// Encodes UTF-8 with '?' for each character that is not a Unicode scalar value.
std::string encodeUTF8Lossy(const std::wstring& text);

} // namespace ul
