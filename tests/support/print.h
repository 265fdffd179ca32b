// SPDX-License-Identifier: Apache-2.0
// How GoogleTest shows values of the base library where an expectation fails.
#pragma once

#include "ul/string.h"

#include <ostream>

namespace ul {

/// Text in quotes, as UTF-8 if it can be.
inline void PrintTo(const String& text, std::ostream* out) {
    try {
        *out << '"' << text.toUTF8() << '"';
    } catch (const std::exception&) {
        *out << '"' << text.toLatin1() << "\" (not Unicode)";
    }
}

} // namespace ul
