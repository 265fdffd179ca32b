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
/// Positions and lengths count characters (`wchar_t`) and fit an `int`: an operation whose result would be longer
/// than 2^31 - 1 characters raises CInvalidArgError.
class UL_EXPORT String {
public:
    /// An empty string.
    String() noexcept = default;
    /// Copies a zero-terminated text; null gives an empty string.
    String(const wchar_t* text);
    /// Copies `length` characters.
    String(const wchar_t* text, std::size_t length);
    /// Copies a zero-terminated text of 8-bit characters, each byte one character (Latin-1); null gives an empty
    /// string.
    String(const char* text);
    /// Copies `length` bytes, each one character (Latin-1).
    String(const char* text, std::size_t length);
    /// Copies a standard string.
    String(const std::wstring& text);
    /// Takes over a standard string.
    String(std::wstring&& text);

    /// Decodes `size` bytes of UTF-8 (RFC 3629).
    /// \throws CError "Invalid UTF-8 text." with property "position", the offset of the first bad byte.
    static String fromUTF8(const char* data, std::size_t size);

    /// The text as UTF-8 (RFC 3629).
    /// \throws CError "Text cannot be encoded as UTF-8." with property "position", the index of the first character
    ///         that is no Unicode scalar value (an unpaired surrogate, for example).
    std::string toUTF8() const;

    /// One byte for each character; what does not fit one byte becomes '?', so that foreign text can never turn into
    /// valid Base64 or PEM.
    std::string toLatin1() const;
    /// Writes `count` characters from position `start` on to `out`, as toLatin1() does. The text must have them.
    void copyLatin1(char* out, int start, int count) const noexcept;

    /// The text as a standard string, which this object owns.
    const std::wstring& toStdWString() const noexcept { return m_text; }
    /// The same, so that a String can stand where one is wanted.
    operator const std::wstring&() const noexcept { return m_text; }
    /// The zero-terminated text, valid until this object changes.
    const wchar_t* c_str() const noexcept { return m_text.c_str(); }

    /// Whether there is no character.
    bool isEmpty() const noexcept { return m_text.empty(); }
    /// Length in characters.
    int getLength() const noexcept { return static_cast<int>(m_text.size()); }

    /// The character at `index`, which must lie in [0, getLength()].
    wchar_t operator[](int index) const noexcept { return m_text[static_cast<std::size_t>(index)]; }

    /// The `count` characters from `start`, or all up to the end if `count` is -1. What lies outside the text is left
    /// out.
    String Mid(int start, int count = -1) const;
    /// Whether the text begins with `prefix`, character by character.
    bool StartsWith(const String& prefix) const noexcept;
    /// The same for a zero-terminated text; null is an empty one.
    bool StartsWith(const wchar_t* prefix) const noexcept;
    /// Removes trailing white space (space, tab, line feed, vertical tab, form feed, carriage return) in place.
    void trimRight();

    /// Appends a text.
    String& operator+=(const String& text);
    /// Appends a zero-terminated text.
    String& operator+=(const wchar_t* text);
    /// Appends a zero-terminated text of 8-bit characters (Latin-1).
    String& operator+=(const char* text);
    /// Appends a character.
    String& operator+=(wchar_t character);
    /// Appends an 8-bit character (Latin-1).
    String& operator+=(char character);
    /// Numbers are not characters: toString() makes text of one.
    template <class Number, class = std::enable_if_t<std::is_arithmetic_v<Number>>>
    String& operator+=(Number) = delete;

    /// Whether both have the same characters.
    bool operator==(const String& other) const noexcept { return m_text == other.m_text; }
    /// The opposite.
    bool operator!=(const String& other) const noexcept { return m_text != other.m_text; }
    /// Compares with a zero-terminated text; null is an empty one.
    bool operator==(const wchar_t* other) const noexcept { return m_text == (other ? other : L""); }
    /// The opposite.
    bool operator!=(const wchar_t* other) const noexcept { return !(*this == other); }
    /// Compares with 8-bit text, each byte one character (Latin-1); null is an empty one.
    bool operator==(const char* other) const noexcept;
    /// The opposite.
    bool operator!=(const char* other) const noexcept { return !(*this == other); }
    /// Ordinal order of the wide characters.
    bool operator<(const String& other) const noexcept { return m_text < other.m_text; }
    /// The same the other way round.
    bool operator>(const String& other) const noexcept { return other < *this; }
    /// Before it in that order, or the same.
    bool operator<=(const String& other) const noexcept { return !(other < *this); }
    /// Behind it in that order, or the same.
    bool operator>=(const String& other) const noexcept { return !(*this < other); }

    /// Overwrites the characters with zeros by stores that the compiler may not drop, and leaves an empty text. What
    /// was copied from the text, or left behind when it grew, is not reached. For keys and pass phrases.
    friend UL_EXPORT void wipe(String& text) noexcept;

private:
    std::wstring m_text;
};

UL_EXPORT void wipe(String& text) noexcept;

/// Compares with a text on the left as with one on the right.
template <class Character,
          class = std::enable_if_t<std::is_same_v<Character, char> || std::is_same_v<Character, wchar_t>>>
bool operator==(const Character* left, const String& right) noexcept {
    return right == left;
}
/// The opposite.
template <class Character,
          class = std::enable_if_t<std::is_same_v<Character, char> || std::is_same_v<Character, wchar_t>>>
bool operator!=(const Character* left, const String& right) noexcept {
    return right != left;
}

/// \throws CInvalidArgError if the result would be too long.
UL_EXPORT String operator+(const String& left, const String& right);

/// A shared empty string.
UL_EXPORT const String& getEmptyString();

/// Decimal text of a number, with a leading "-" for a negative one and no padding.
UL_EXPORT String toString(long long number);

/// Hexadecimal text of the 32 bits of a number: digits and upper-case letters, no prefix, no leading zeros.
UL_EXPORT String toHexString(int number);

/// Splits `text` at the first occurrence of `separator`.
///
/// `before` gets the text ahead of it, `separatorFound` the separator and `after` the rest. If the separator does not
/// occur (an empty one never does), `before` gets the whole text, the other two become empty. The outputs may be the
/// same objects as the inputs.
UL_EXPORT void partition(const String& text, const String& separator, String& before, String& separatorFound,
                         String& after);

} // namespace ul

/// The hash of the characters.
template <>
struct std::hash<ul::String> {
    std::size_t operator()(const ul::String& text) const noexcept { return std::hash<std::wstring>()(text); }
};
