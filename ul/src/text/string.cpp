// SPDX-License-Identifier: Apache-2.0
#include "ul/string.h"

#include "errors/raise.h"
#include "object/immortal.h"
#include "text/utf8_text.h"

#include "ul/buffer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <utility>

namespace ul {

namespace {

constexpr char whereConstructed[] = "String::String";
constexpr char whereAppended[] = "String::operator+=";

void checkLength(const char* where, std::size_t length) {
    if (length > static_cast<std::size_t>(INT_MAX))
        raiseInvalidArg(where, "text is too long");
}

wchar_t widen(char character) {
    return static_cast<wchar_t>(static_cast<unsigned char>(character));
}

std::wstring widen(const char* text, std::size_t length) {
    checkLength(whereConstructed, length);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text);
    return std::wstring(bytes, bytes + length);
}

template <class Number>
String formatNumber(Number number, int base) {
    std::array<char, 24> text;
    const std::to_chars_result end = std::to_chars(text.data(), text.data() + text.size(), number, base);
    return String(text.data(), static_cast<std::size_t>(end.ptr - text.data()));
}

} // namespace

String::String(const wchar_t* text) : String(text, text ? std::wcslen(text) : 0) {}

String::String(const wchar_t* text, std::size_t length) {
    checkLength(whereConstructed, length);
    if (length > 0)
        m_text.assign(text, length);
}

String::String(const char* text) : String(text, text ? std::strlen(text) : 0) {}

String::String(const char* text, std::size_t length) : m_text(widen(text, length)) {}

String::String(const std::wstring& text) : String(text.data(), text.size()) {}

String::String(std::wstring&& text) : m_text(std::move(text)) {
    checkLength(whereConstructed, m_text.size());
}

String String::fromUTF8(const char* data, std::size_t size) {
    return decodeUTF8(data, size);
}

std::string String::toUTF8() const {
    return encodeUTF8(m_text);
}

std::string String::toLatin1() const {
    std::string result(m_text.size(), '\0');
    copyLatin1(result.data(), 0, getLength());
    return result;
}

void String::copyLatin1(char* out, int start, int count) const noexcept {
    const wchar_t* const source = m_text.data() + start;
    // Nearly every text fits. Combining the bits instead of testing each character lets compilers process several
    // characters at a time: all Base64 text passes through here.
    std::uint32_t allBits = 0;
    for (int i = 0; i < count; ++i) {
        allBits |= toCodeUnit(source[i]);
        out[i] = static_cast<char>(source[i]);
    }
    if (allBits <= 0xFF)
        return;
    for (int i = 0; i < count; ++i)
        out[i] = toCodeUnit(source[i]) > 0xFF ? '?' : static_cast<char>(source[i]);
}

String String::Mid(int start, int count) const {
    // In 64 bits, so that the sum of any two positions fits.
    const long long length = getLength();
    const long long end = count < 0 ? length : std::min<long long>(static_cast<long long>(start) + count, length);
    const long long begin = std::clamp<long long>(start, 0, length);
    if (end <= begin)
        return String();
    return String(m_text.data() + begin, static_cast<std::size_t>(end - begin));
}

bool String::StartsWith(const String& prefix) const noexcept {
    return m_text.compare(0, prefix.m_text.size(), prefix.m_text) == 0;
}

bool String::StartsWith(const wchar_t* prefix) const noexcept {
    return !prefix || m_text.compare(0, std::wcslen(prefix), prefix) == 0;
}

void String::trimRight() {
    const std::size_t last = m_text.find_last_not_of(L" \t\n\v\f\r");
    m_text.erase(last == std::wstring::npos ? 0 : last + 1);
}

String& String::operator+=(const String& text) {
    checkLength(whereAppended, m_text.size() + text.m_text.size());
    m_text += text.m_text;
    return *this;
}

String& String::operator+=(const wchar_t* text) {
    return *this += String(text);
}

String& String::operator+=(const char* text) {
    return *this += String(text);
}

String& String::operator+=(wchar_t character) {
    checkLength(whereAppended, m_text.size() + 1);
    m_text += character;
    return *this;
}

String& String::operator+=(char character) {
    return *this += widen(character);
}

bool String::operator==(const char* other) const noexcept {
    if (!other)
        return isEmpty();
    return std::equal(m_text.begin(), m_text.end(), other, other + std::strlen(other),
                      [](wchar_t left, char right) { return left == widen(right); });
}

void wipe(String& text) noexcept {
    std::wstring& characters = text.m_text;
    // The spare capacity may still have characters of a longer text. This does not allocate.
    characters.resize(characters.capacity());
    wipe(characters.data(), characters.size() * sizeof(wchar_t));
    characters.clear();
}

String operator+(const String& left, const String& right) {
    std::wstring result;
    const std::size_t length = left.toStdWString().size() + right.toStdWString().size();
    checkLength("operator+", length);
    result.reserve(length);
    result += left.toStdWString();
    result += right.toStdWString();
    return String(std::move(result));
}

const String& getEmptyString() {
    static Immortal<String> empty;
    return empty.get();
}

String toString(long long number) {
    return formatNumber(number, 10);
}

String toHexString(int number) {
    std::wstring text = formatNumber(static_cast<unsigned>(number), 16);
    for (wchar_t& digit : text) {
        if (digit >= L'a')
            digit = static_cast<wchar_t>(digit - L'a' + L'A');
    }
    return String(std::move(text));
}

void partition(const String& text, const String& separator, String& before, String& separatorFound, String& after) {
    const std::wstring& whole = text;
    const std::wstring& wanted = separator;
    const std::size_t position = wanted.empty() ? std::wstring::npos : whole.find(wanted);
    String head = text;
    String found;
    String tail;
    if (position != std::wstring::npos) {
        head = whole.substr(0, position);
        tail = whole.substr(position + wanted.size());
        found = separator;
    }
    before = std::move(head);
    separatorFound = std::move(found);
    after = std::move(tail);
}

} // namespace ul
