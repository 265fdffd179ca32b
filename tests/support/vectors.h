// SPDX-License-Identifier: Apache-2.0
// Test vectors from tests/data/*.vec.
//
// A file holds sections of vectors: "[section]" starts a section, "name = value" gives a field, an empty line ends a
// vector, "#" starts a comment. A field that the reader does not know fails the test, so that no vector is misread.
#pragma once

#include <istream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace sarn_test {

using Bytes = std::vector<unsigned char>;

/// One vector of a file.
class Vector {
public:
    Vector(std::string section, int line) : m_section(std::move(section)), m_line(line) {}

    const std::string& getSection() const { return m_section; }
    bool has(const std::string& field) const { return m_fields.count(field) > 0; }
    /// The text of a field that must be there.
    const std::string& getText(const std::string& field) const;
    /// The field's hexadecimal digits as bytes.
    Bytes getBytes(const std::string& field) const;
    /// The number that is all of the field's text.
    int getInt(const std::string& field) const;
    /// Where the vector stands, for failure messages.
    std::string describe() const { return "[" + m_section + "] line " + std::to_string(m_line); }

    void setField(const std::string& field, const std::string& value) { m_fields[field] = value; }

private:
    std::string m_section;
    int m_line;
    std::map<std::string, std::string> m_fields;
};

/// The folder tests/data, without a separator at its end.
std::string getTestDataFolder();

/// Reads a file of tests/data, every field of which must be one of `fields`. Throws if anything is wrong with it.
std::vector<Vector> readVectors(const std::string& fileName, const std::set<std::string>& fields);

/// Reads the vectors of a text, which messages call `name`.
std::vector<Vector> parseVectors(std::istream& text, const std::string& name, const std::set<std::string>& fields);

/// Throws where `text` is not pairs of hexadecimal digits and nothing else.
Bytes fromHex(const std::string& text);
std::string toHex(const Bytes& bytes);

/// The plaintext that make_cipher_vectors.py uses.
Bytes makePattern(int size);

} // namespace sarn_test
