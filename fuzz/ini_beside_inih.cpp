// SPDX-License-Identifier: Apache-2.0
#include "ini_beside_inih.h"

#include "property.h"
#include "support/ini_values.h"

#include <map>
#include <sstream>
#include <utility>

#include <ini.h>

namespace sarn_fuzz {

namespace {

using Values = std::map<std::pair<std::string, std::string>, std::string>;

/// inih reads an indented line as part of the value before, ";" within a line as a comment, ":" as "=", quotes and the
/// spaces in a section's brackets as text, and any control character as a space. It cuts long names and lines.
bool hasSameRules(const std::string& line) {
    constexpr std::size_t longestSection = 49;
    constexpr std::size_t longestLine = 190;
    const std::string text = line.substr(0, line.find_last_not_of('\r') + 1);
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    if (text.size() > longestLine || text.find_first_of(std::string("\0\r\v\f:\"", 6)) != std::string::npos)
        return false;
    if (text.find_first_not_of(" \t") == std::string::npos)
        return true;
    const std::size_t end = text.find(']');
    if (text[0] == '[' &&
        (end == std::string::npos || end > longestSection || isBlank(text[1]) || isBlank(text[end - 1])))
        return false;
    return !isBlank(text[0]) && text.find(';', 1) == std::string::npos;
}

Values list(const ul::CINIContent& content) {
    Values values;
    sarn_test::forEachValue(content, [&](const std::string& section, const std::string& name, std::string value) {
        values[{section, name}] = std::move(value);
    });
    return values;
}

int note(void* user, const char* section, const char* name, const char* value) {
    (*static_cast<Values*>(user))[{section, name}] = value;
    return 1;
}

} // namespace

void compareWithInih(const std::string& text, const ul::CINIContent& content) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (!hasSameRules(line))
            return;
    Values values;
    require(ini_parse_string(text.c_str(), note, &values) == 0, "inih reads the text");
    require(values == list(content), "inih reads the same values");
}

} // namespace sarn_fuzz
