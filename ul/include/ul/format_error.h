// SPDX-License-Identifier: Apache-2.0
/// \file
/// Complete descriptions of errors, for logs. Header-only.
#pragma once

#include "ul/error.h"
#include "ul/props.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <string>
#include <utility>

namespace ul {

/// Iterates over named values: `for (const auto& [name, value] : error.getProps())`. Valid as long as the values.
class CPropIterator {
public:
    /// Starts at `index`.
    CPropIterator(const CProps& props, int index) noexcept : m_props(&props), m_index(index) {}
    /// Name and value.
    std::pair<const String&, const String&> operator*() const noexcept {
        return {m_props->getName(m_index), m_props->getValue(m_index)};
    }
    /// Moves to the next value.
    CPropIterator& operator++() noexcept {
        ++m_index;
        return *this;
    }
    /// Whether the two iterators differ.
    bool operator!=(const CPropIterator& end) const noexcept { return m_index != end.m_index; }

private:
    const CProps* m_props;
    int m_index;
};

/// The first value, for range-based loops.
inline CPropIterator begin(const CProps& props) noexcept {
    return {props, 0};
}
/// One past the last value.
inline CPropIterator end(const CProps& props) noexcept {
    return {props, props.getCount()};
}

/// Whether a reader of a log could take the character for a line end, or a terminal for a command.
inline bool isControl(wchar_t character) noexcept {
    return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 || character == 0x2029;
}

/// Implementation of formatError().
namespace detail {

/// Encodes as UTF-8, with '?' for control characters and for what UTF-8 cannot express: an error must be shown whatever
/// text it carries.
inline std::string toShownText(std::wstring text) {
    std::replace_if(text.begin(), text.end(), isControl, L'?');
    return CError(text, "", -1, CProps(), nullptr).what();
}

/// The text of an error of another library, as UTF-8 or else Latin-1.
inline String decodeText(const char* what) {
    try {
        return String::fromUTF8(what, std::strlen(what));
    } catch (const CError&) {
        return what;
    }
}

/// The part of a line for an error of the libraries without its causes.
inline std::string formatOwnError(const CError& error) {
    std::string line;
    if (const auto* const refusal = dynamic_cast<const CInvalidArgError*>(&error))
        line = toShownText(refusal->getWhere()) + ": ";
    line += toShownText(error.getMessage());
    const char* separator = " [";
    for (const auto& [name, value] : error.getProps()) {
        line += separator + toShownText(name) + "=" + toShownText(value);
        separator = ", ";
    }
    if (error.getProps().getCount() > 0)
        line += "]";
    if (!error.getText().isEmpty())
        line += " (" + toShownText(error.getText()) + ")";
    if (error.getCode() != -1)
        line += " Code " + std::to_string(error.getCode()) + ".";
    return line;
}

} // namespace detail

/// Formats everything in an error as one line of UTF-8 without a line end: the operation that refused an argument, the
/// message, the properties, the second text, the code, and the same for each cause. For an error that is not a CError
/// it gives what(). Control characters become '?', so that no file name can forge a log line or control a terminal.
///
/// To show an error to a user, what() is enough.
inline std::string formatError(const std::exception& error) {
    const auto* const own = dynamic_cast<const CError*>(&error);
    if (!own)
        return detail::toShownText(detail::decodeText(error.what()));
    std::string line = detail::formatOwnError(*own);
    for (const CError* cause = own->getCause(); cause; cause = cause->getCause())
        line += " Caused by: " + detail::formatOwnError(*cause);
    return line;
}

} // namespace ul
