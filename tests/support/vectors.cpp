// SPDX-License-Identifier: Apache-2.0
#include "support/vectors.h"

#include <cctype>
#include <fstream>
#include <stdexcept>

namespace sarn_test {

const std::string& Vector::getText(const std::string& field) const {
    const auto found = m_fields.find(field);
    if (found == m_fields.end())
        throw std::runtime_error(describe() + ": no field " + field);
    return found->second;
}

Bytes Vector::getBytes(const std::string& field) const {
    return fromHex(getText(field));
}

int Vector::getInt(const std::string& field) const {
    std::size_t length = 0;
    const int number = std::stoi(getText(field), &length);
    if (length != getText(field).size())
        throw std::runtime_error(describe() + ": not a number: " + getText(field));
    return number;
}

std::string getTestDataFolder() {
    return SARN_TEST_DATA_DIR;
}

namespace {

int toDigit(char character) {
    static const std::string digits = "0123456789abcdef";
    const std::size_t value = digits.find(static_cast<char>(std::tolower(static_cast<unsigned char>(character))));
    if (value == std::string::npos)
        throw std::runtime_error(std::string("not hexadecimal: '") + character + "'");
    return static_cast<int>(value);
}

/// Parses "name = value" and adds the field.
void takeField(Vector& vector, const std::string& line, const std::set<std::string>& fields) {
    const std::size_t separator = line.find(" =");
    const std::string field = line.substr(0, separator);
    if (separator == std::string::npos || fields.count(field) == 0)
        throw std::runtime_error("unknown field");
    if (vector.has(field))
        throw std::runtime_error("the vector has that field already");
    vector.setField(field, line.size() > separator + 3 ? line.substr(separator + 3) : "");
}

} // namespace

std::vector<Vector> parseVectors(std::istream& text, const std::string& name, const std::set<std::string>& fields) {
    std::vector<Vector> vectors;
    std::string section;
    bool isOpen = false;
    std::string line;
    for (int number = 1; std::getline(text, line); ++number) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        try {
            if (line.compare(0, 1, "[") == 0) {
                if (line.back() != ']')
                    throw std::runtime_error("the section has no end");
                section = line.substr(1, line.size() - 2);
                isOpen = false;
            } else if (line.empty()) {
                isOpen = false;
            } else if (line.front() != '#') {
                if (!isOpen)
                    vectors.emplace_back(section, number);
                isOpen = true;
                takeField(vectors.back(), line, fields);
            }
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(name + ", line " + std::to_string(number) + ": " + error.what());
        }
    }
    if (vectors.empty())
        throw std::runtime_error(name + ": no vectors");
    return vectors;
}

std::vector<Vector> readVectors(const std::string& fileName, const std::set<std::string>& fields) {
    const std::string path = getTestDataFolder() + "/" + fileName;
    std::ifstream file(path);
    if (!file)
        throw std::runtime_error("cannot open " + path);
    return parseVectors(file, path, fields);
}

Bytes fromHex(const std::string& text) {
    if (text.size() % 2 != 0)
        throw std::runtime_error("odd number of hexadecimal digits");
    Bytes bytes;
    for (std::size_t i = 0; i < text.size(); i += 2)
        bytes.push_back(static_cast<unsigned char>(toDigit(text[i]) * 16 + toDigit(text[i + 1])));
    return bytes;
}

std::string toHex(const Bytes& bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

Bytes makePattern(int size) {
    Bytes bytes;
    bytes.reserve(static_cast<std::size_t>(size));
    for (int i = 0; i < size; ++i)
        bytes.push_back(static_cast<unsigned char>(i * 31 + i / 256));
    return bytes;
}

} // namespace sarn_test
