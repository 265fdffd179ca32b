// SPDX-License-Identifier: Apache-2.0
/// \file
/// All that an error says, for logs. Header-only.
#pragma once

#include "ul/error.h"
#include "ul/props.h"

#include <exception>
#include <string>
#include <utility>

namespace ul {

/// Walks over named values: `for (const auto& [name, value] : error.getProps())`. Valid as long as the values.
class CPropIterator {
public:
    /// Starts at `index`.
    CPropIterator(const CProps& props, int index) noexcept : m_props(&props), m_index(index) {}
    /// Name and value.
    std::pair<const String&, const String&> operator*() const noexcept {
        return {m_props->getName(m_index), m_props->getValue(m_index)};
    }
    /// Goes on to the next.
    CPropIterator& operator++() noexcept {
        ++m_index;
        return *this;
    }
    /// Whether the end is not reached.
    bool operator!=(const CPropIterator& end) const noexcept { return m_index != end.m_index; }

private:
    const CProps* m_props;
    int m_index;
};

/// The first value, for range-based loops.
inline CPropIterator begin(const CProps& props) noexcept {
    return {props, 0};
}
/// The place after the last value.
inline CPropIterator end(const CProps& props) noexcept {
    return {props, props.getCount()};
}

/// Implementation of formatError().
namespace detail {

/// UTF-8 with '?' for what UTF-8 cannot express: an error must be shown whatever text it carries.
inline std::string toShownText(const String& text) {
    return CError(text, "", -1, CProps(), nullptr).what();
}

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

/// One line of UTF-8, without a line end, with all that an error says: for a refused argument the operation, then the
/// message, the properties, the second text, the code, and the same of its causes. Of an error that is not a CError it
/// is what(). A control character becomes '?', so that no file name forges a line of a log or steers a terminal.
///
/// For a person at the screen what() is enough.
inline std::string formatError(const std::exception& error) {
    const auto* const own = dynamic_cast<const CError*>(&error);
    std::string line = own ? detail::formatOwnError(*own) : error.what();
    for (char& character : line)
        if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F)
            character = '?';
    return line;
}

} // namespace ul
