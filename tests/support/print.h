// SPDX-License-Identifier: Apache-2.0
// How GoogleTest shows values of the base library where an expectation fails.
#pragma once

#include "ul/string.h"

#include <exception>
#include <ostream>
#include <string>

namespace ul {

/// Text in quotes, as UTF-8 if it can be.
inline void PrintTo(const String& text, std::ostream* out) {
    try {
        const std::string utf8 = text.toUTF8();
        *out << '"' << utf8 << '"';
    } catch (const std::exception&) {
        *out << '"' << text.toLatin1() << "\" (not Unicode)";
    }
}

} // namespace ul
