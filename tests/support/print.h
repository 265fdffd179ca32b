// SPDX-License-Identifier: Apache-2.0
// Prints values of the base library in the messages of GoogleTest.
#pragma once

#include "ul/string.h"

#include <exception>
#include <ostream>
#include <string>

namespace ul {

/// Prints text in quotes, as UTF-8 if it is Unicode.
inline void PrintTo(const String& text, std::ostream* out) {
    try {
        const std::string utf8 = text.toUTF8();
        *out << '"' << utf8 << '"';
    } catch (const std::exception&) {
        *out << '"' << text.toLatin1() << "\" (not Unicode)";
    }
}

} // namespace ul
