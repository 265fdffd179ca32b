// SPDX-License-Identifier: Apache-2.0
// Test vectors from tests/data/*.vec.
//
// A file contains sections of vectors: "[section]" starts a section, "name = value" is a field, an empty line ends a
// vector, "#" starts a comment. An unknown field is an error, so that no vector is misread.
#pragma once

#include <istream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace sarn_test {

using Bytes = std::vector<unsigned char>;

class Vector {
public:
    Vector(std::string section, int line) : m_section(std::move(section)), m_line(line) {}

    const std::string& getSection() const { return m_section; }
    bool has(const std::string& field) const { return m_fields.count(field) > 0; }
    /// The text of a field, which must exist.
    const std::string& getText(const std::string& field) const;
    /// The field's hexadecimal digits as bytes.
    Bytes getBytes(const std::string& field) const;
    int getInt(const std::string& field) const;
    /// Section and line, for messages.
    std::string describe() const { return "[" + m_section + "] line " + std::to_string(m_line); }

    void setField(const std::string& field, const std::string& value) { m_fields[field] = value; }

private:
    std::string m_section;
    int m_line;
    std::map<std::string, std::string> m_fields;
};

/// The path of tests/data, without a separator at its end.
std::string getTestDataFolder();

/// Reads a file of tests/data. Throws if it is malformed or has other fields than `fields`.
std::vector<Vector> readVectors(const std::string& fileName, const std::set<std::string>& fields);

/// Reads vectors from a text that messages call `name`.
std::vector<Vector> parseVectors(std::istream& text, const std::string& name, const std::set<std::string>& fields);

/// Throws unless `text` consists of pairs of hexadecimal digits.
Bytes fromHex(const std::string& text);
std::string toHex(const Bytes& bytes);

/// The plaintext of make_cipher_vectors.py.
Bytes makePattern(int size);

} // namespace sarn_test
