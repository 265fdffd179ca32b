// SPDX-License-Identifier: Apache-2.0
/// \file
/// Wide-character text.
#pragma once

#include "ul/export.h"

#include <cstddef>
#include <functional>
#include <string>
#include <type_traits>

namespace ul {

/// A string of wide characters: UTF-16 code units on Windows, UTF-32 elsewhere.
///
/// Positions and lengths count characters (`wchar_t`) and fit in an `int`: an operation whose result would exceed
/// 2^31 - 1 characters raises CInvalidArgError.
class UL_EXPORT String {
public:
    /// Creates an empty string.
    String() noexcept = default;
    /// Copies a null-terminated text; null gives an empty string.
    String(const wchar_t* text);
    /// Copies `length` characters.
    String(const wchar_t* text, std::size_t length);
    /// Copies a null-terminated text of 8-bit characters in Latin-1, where each byte is one character; null gives an
    /// empty string.
    String(const char* text);
    /// Copies `length` bytes of Latin-1.
    String(const char* text, std::size_t length);
    /// Copies a standard string.
    String(const std::wstring& text);
    /// Takes a standard string.
    String(std::wstring&& text);

    /// Decodes `size` bytes of UTF-8 (RFC 3629).
    /// \throws CError "Invalid UTF-8 text." with property "position", the offset of the first bad byte.
    static String fromUTF8(const char* data, std::size_t size);

    /// Encodes the text as UTF-8 (RFC 3629).
    /// \throws CError "Text cannot be encoded as UTF-8." with property "position", the index of the first character
    ///         that is not a Unicode scalar value (an unpaired surrogate, for example).
    std::string toUTF8() const;

    /// Encodes the text as Latin-1. A character outside Latin-1 becomes '?', so that no such text can pass for Base64
    /// or PEM.
    std::string toLatin1() const;
    /// Writes `count` characters, from position `start` on, to `out` as toLatin1() does. Requires: the text has them.
    void copyLatin1(char* out, int start, int count) const noexcept;

    /// The text as a standard string, owned by this object.
    const std::wstring& toStdWString() const noexcept { return m_text; }
    /// The text, for parameters of type std::wstring. Owned by this object.
    operator const std::wstring&() const noexcept { return m_text; }
    /// The null-terminated text. Valid until this object changes.
    const wchar_t* c_str() const noexcept { return m_text.c_str(); }

    /// Whether the text has no characters.
    bool isEmpty() const noexcept { return m_text.empty(); }
    /// Length in characters.
    int getLength() const noexcept { return static_cast<int>(m_text.size()); }

    /// The character at `index`. Requires: 0 <= `index` <= getLength().
    wchar_t operator[](int index) const noexcept { return m_text[static_cast<std::size_t>(index)]; }

    /// The `count` characters from `start` on; -1 means all up to the end. The range is clipped to the text.
    String Mid(int start, int count = -1) const;
    /// Whether the text begins with `prefix`. Compares ordinally.
    bool StartsWith(const String& prefix) const noexcept;
    /// Compares with a null-terminated prefix; null is an empty one.
    bool StartsWith(const wchar_t* prefix) const noexcept;
    /// Removes trailing white space (space, tab, line feed, vertical tab, form feed, carriage return) in place.
    void trimRight();

    /// Appends a text.
    String& operator+=(const String& text);
    /// Appends a null-terminated text.
    String& operator+=(const wchar_t* text);
    /// Appends a null-terminated text in Latin-1.
    String& operator+=(const char* text);
    /// Appends a character.
    String& operator+=(wchar_t character);
    /// Appends a Latin-1 character.
    String& operator+=(char character);
    /// Not available, because a number would be taken for a character. Use toString().
    template <class Number, class = std::enable_if_t<std::is_arithmetic_v<Number>>>
    String& operator+=(Number) = delete;

    /// Whether both texts are equal.
    bool operator==(const String& other) const noexcept { return m_text == other.m_text; }
    /// Negation of operator==.
    bool operator!=(const String& other) const noexcept { return m_text != other.m_text; }
    /// Compares with a null-terminated text; null is an empty one.
    bool operator==(const wchar_t* other) const noexcept { return m_text == (other ? other : L""); }
    /// Negation of operator==.
    bool operator!=(const wchar_t* other) const noexcept { return !(*this == other); }
    /// Compares with a null-terminated text in Latin-1; null is an empty one.
    bool operator==(const char* other) const noexcept;
    /// Negation of operator==.
    bool operator!=(const char* other) const noexcept { return !(*this == other); }
    /// Ordinal order of the characters.
    bool operator<(const String& other) const noexcept { return m_text < other.m_text; }
    /// Ordinal order of the characters.
    bool operator>(const String& other) const noexcept { return other < *this; }
    /// Ordinal order of the characters.
    bool operator<=(const String& other) const noexcept { return !(other < *this); }
    /// Ordinal order of the characters.
    bool operator>=(const String& other) const noexcept { return !(*this < other); }

    /// Overwrites the characters with zeros, which the compiler cannot optimise away, and empties the text. For keys
    /// and passphrases. Copies of the text, and blocks that it gave up when it grew, are not reached.
    friend UL_EXPORT void wipe(String& text) noexcept;

private:
    std::wstring m_text;
};

UL_EXPORT void wipe(String& text) noexcept;

/// Compares with a text on the left; null is an empty one.
template <class Character,
          class = std::enable_if_t<std::is_same_v<Character, char> || std::is_same_v<Character, wchar_t>>>
bool operator==(const Character* left, const String& right) noexcept {
    return right == left;
}
/// Negation of operator==.
template <class Character,
          class = std::enable_if_t<std::is_same_v<Character, char> || std::is_same_v<Character, wchar_t>>>
bool operator!=(const Character* left, const String& right) noexcept {
    return right != left;
}

/// Concatenates two texts.
/// \throws CInvalidArgError if the result would be too long.
UL_EXPORT String operator+(const String& left, const String& right);

/// A shared empty string. Valid until the process ends.
UL_EXPORT const String& getEmptyString();

/// Decimal text of a number, with "-" before a negative one and no padding.
UL_EXPORT String toString(long long number);

/// Hexadecimal text of the 32 bits of a number: upper case, without a prefix or leading zeros.
UL_EXPORT String toHexString(int number);

/// Splits `text` at the first occurrence of `separator`.
///
/// `before` receives the text before the separator, `separatorFound` the separator, and `after` the rest. If the
/// separator does not occur (an empty one never does), `before` receives the whole text and the other two become empty.
/// The outputs may be the same objects as the inputs.
UL_EXPORT void partition(const String& text, const String& separator, String& before, String& separatorFound,
                         String& after);

} // namespace ul

/// Makes texts keys of unordered containers.
template <>
struct std::hash<ul::String> {
    /// Hashes the characters.
    std::size_t operator()(const ul::String& text) const noexcept { return std::hash<std::wstring>()(text); }
};
