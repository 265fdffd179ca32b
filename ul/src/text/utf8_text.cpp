// SPDX-License-Identifier: Apache-2.0
#include "text/utf8_text.h"

#include "errors/raise.h"

#include <utf8.h>

#include <cstdint>
#include <iterator>

namespace ul {

namespace {

constexpr bool isUTF16 = sizeof(wchar_t) == 2;
constexpr std::uint32_t noScalar = 0xFFFFFFFF;

bool isLeadSurrogate(std::uint32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isTrailSurrogate(std::uint32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// Decodes the Unicode scalar value at `position` and moves `position` past it; noScalar if there is none.
std::uint32_t nextScalar(const std::wstring& text, std::size_t& position) {
    const std::uint32_t unit = toCodeUnit(text[position++]);
    if (isUTF16 && isLeadSurrogate(unit) && position < text.size()) {
        const std::uint32_t trail = toCodeUnit(text[position]);
        if (isTrailSurrogate(trail)) {
            ++position;
            return 0x10000 + ((unit - 0xD800) << 10) + (trail - 0xDC00);
        }
    }
    const bool isScalar = unit <= 0x10FFFF && !isLeadSurrogate(unit) && !isTrailSurrogate(unit);
    return isScalar ? unit : noScalar;
}

void appendScalar(std::wstring& text, std::uint32_t scalar) {
    if (isUTF16 && scalar > 0xFFFF) {
        text += static_cast<wchar_t>(0xD800 + ((scalar - 0x10000) >> 10));
        text += static_cast<wchar_t>(0xDC00 + ((scalar - 0x10000) & 0x3FF));
    } else {
        text += static_cast<wchar_t>(scalar);
    }
}

/// Number of bytes of a text as UTF-8, or a few more.
std::size_t countBytes(const std::wstring& text) {
    std::size_t count = text.size();
    for (const wchar_t character : text) {
        const std::uint32_t unit = toCodeUnit(character);
        count += static_cast<std::size_t>(unit > 0x7F) + (unit > 0x7FF) + (unit > 0xFFFF);
    }
    return count;
}

} // namespace

String decodeUTF8(const char* data, std::size_t size) {
    const char* const end = data + size;
    const char* const invalid = utf8::find_invalid(data, end);
    if (invalid != end)
        raiseError("Invalid UTF-8 text.", CProps().add("position", toString(invalid - data)));
    std::wstring text;
    // All at once, as in encodeUTF8().
    text.reserve(size);
    for (const char* next = data; next != end;)
        appendScalar(text, utf8::unchecked::next(next));
    return String(std::move(text));
}

String decodeUTF8OrLatin1(const std::string& text) {
    const bool isUTF8 = utf8::is_valid(text.begin(), text.end());
    return isUTF8 ? decodeUTF8(text.data(), text.size()) : String(text.data(), text.size());
}

std::string encodeUTF8(const std::wstring& text) {
    std::string result;
    // All at once: growth would leave a copy of a secret in freed memory.
    result.reserve(countBytes(text));
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t start = position;
        const std::uint32_t scalar = nextScalar(text, position);
        if (scalar == noScalar)
            raiseError("Text cannot be encoded as UTF-8.",
                       CProps().add("position", toString(static_cast<long long>(start))));
        utf8::unchecked::append(scalar, std::back_inserter(result));
    }
    return result;
}

std::string encodeUTF8Lossy(const std::wstring& text) {
    std::string result;
    for (std::size_t position = 0; position < text.size();) {
        const std::uint32_t scalar = nextScalar(text, position);
        utf8::unchecked::append(scalar == noScalar ? U'?' : scalar, std::back_inserter(result));
    }
    return result;
}

} // namespace ul
