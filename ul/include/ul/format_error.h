// SPDX-License-Identifier: Apache-2.0
/// \file
/// Complete descriptions of errors, for logs. Header-only.
#pragma once

#include "ul/error.h"
#include "ul/props.h"

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

/// Implementation of formatError().
namespace detail {

/// Encodes as UTF-8, with '?' for what UTF-8 cannot express: an error must be shown whatever text it carries.
inline std::string toShownText(const String& text) {
    return CError(text, "", -1, CProps(), nullptr).what();
}

/// The line for an error of the libraries, with those of its causes.
inline std::string formatOwnError(const CError& error) {
    std::string line;
    if (const auto* const refusal = dynamic_cast<const CInvalidArgError*>(&error))
        line = toShownText(refusal->getWhere()) + ": ";
    line += error.what();
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
    if (error.getCause())
        line += " Caused by: " + formatOwnError(*error.getCause());
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
    std::string line = own ? detail::formatOwnError(*own) : error.what();
    for (char& character : line)
        if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F)
            character = '?';
    return line;
}

} // namespace ul
