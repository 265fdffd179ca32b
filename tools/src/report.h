// SPDX-License-Identifier: Apache-2.0
// Text for users and programs.
#pragma once

#include <ul/host.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// Prints text to standard output.
/// \throws ul::CFileError.
void print(const std::string& text);

/// Prints a message to standard error, if that works.
void warn(const std::string& command, const std::string& message);

/// A name or message for a terminal: valid UTF-8, with '?' for control characters.
std::string toShownText(const std::string& text);

/// Decodes UTF-8; a text that is not UTF-8 is read as Latin-1.
ul::String toText(const std::string& text);

/// A file name as in lists of digests: on one line, marked by a backslash before the line if it had to be changed.
std::string escapeName(const std::string& name, bool& isChanged);

/// Reverses escapeName().
std::string unescapeName(std::string_view name);

/// Named values, in their order, shown as lines or as an object of JSON.
class Record {
public:
    Record& add(const std::string& name, const std::string& value);
    Record& add(const std::string& name, const char* value) { return add(name, std::string(value)); }
    Record& add(const std::string& name, std::int64_t value);
    Record& add(const std::string& name, bool value);

    /// A line "name  value" for each, with the values in a column.
    std::string toLines() const;
    std::string toJson() const;

private:
    struct Field {
        std::string name;
        std::string shown;
        std::string json;
    };
    std::vector<Field> m_fields;
};

/// An array of JSON, with a line for each record.
std::string toJson(const std::vector<Record>& records);

} // namespace tool
