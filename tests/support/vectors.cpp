// SPDX-License-Identifier: Apache-2.0
#include "support/vectors.h"

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

std::string getTestDataFolder() {
    return SARN_TEST_DATA_DIR;
}

std::vector<Vector> readVectors(const std::string& fileName, const std::set<std::string>& fields) {
    const std::string path = getTestDataFolder() + "/" + fileName;
    std::ifstream file(path);
    if (!file)
        throw std::runtime_error("cannot open " + path);
    std::vector<Vector> vectors;
    std::string section;
    std::string line;
    bool isOpen = false;
    for (int number = 1; std::getline(file, line); ++number) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty()) {
            isOpen = false;
        } else if (line.front() == '[') {
            section = line.substr(1, line.find(']') - 1);
            isOpen = false;
        } else if (line.front() != '#') {
            const std::size_t separator = line.find(" =");
            const std::string field = line.substr(0, separator);
            if (separator == std::string::npos || fields.count(field) == 0)
                throw std::runtime_error(path + ": unknown field in line " + std::to_string(number));
            if (!isOpen)
                vectors.emplace_back(section, number);
            isOpen = true;
            vectors.back().setField(field, line.size() > separator + 3 ? line.substr(separator + 3) : "");
        }
    }
    if (vectors.empty())
        throw std::runtime_error(path + ": no vectors");
    return vectors;
}

Bytes fromHex(const std::string& text) {
    if (text.size() % 2 != 0)
        throw std::runtime_error("odd number of hexadecimal digits");
    Bytes bytes;
    for (std::size_t i = 0; i < text.size(); i += 2)
        bytes.push_back(static_cast<unsigned char>(std::stoi(text.substr(i, 2), nullptr, 16)));
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
