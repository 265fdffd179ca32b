// SPDX-License-Identifier: Apache-2.0
// UTF-8 to and from wide characters of either width.
#pragma once

#include "ul/string.h"

#include <cstdint>
#include <string>
#include <type_traits>

namespace ul {

/// The character's number, whatever the sign of wchar_t.
constexpr std::uint32_t toCodeUnit(wchar_t character) {
    return static_cast<std::make_unsigned_t<wchar_t>>(character);
}

/// As String::fromUTF8().
String decodeUTF8(const char* data, std::size_t size);

/// Text that is meant to be UTF-8; each byte one character if it is not.
String decodeUTF8OrLatin1(const std::string& text);

/// As String::toUTF8().
std::string encodeUTF8(const std::wstring& text);

/// UTF-8 with '?' in place of each character that is no Unicode scalar value.
std::string encodeUTF8Lossy(const std::wstring& text);

} // namespace ul
