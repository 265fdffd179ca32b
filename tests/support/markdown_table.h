// SPDX-License-Identifier: Apache-2.0
// Tables of the documentation. Their rows are tests.
#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <ostream>
#include <string>
#include <vector>

namespace sarn_test {

/// A row with the text of each cell, and the code spans in it.
struct MarkdownRow {
    int line = 0;
    std::vector<std::string> cells;
    std::vector<std::vector<std::string>> code;
};

/// The rows of the first table of docs/`page` whose first column is headed `heading`. Throws if there is none.
std::vector<MarkdownRow> readMarkdownTable(const std::string& page, const std::string& heading);

inline void PrintTo(const MarkdownRow& row, std::ostream* out) {
    *out << "line " << row.line;
}

/// Names a test after the third cell of its row.
inline std::string getMarkdownRowName(const testing::TestParamInfo<MarkdownRow>& info) {
    std::string name = info.param.cells[2] + "_" + std::to_string(info.index);
    for (char& character : name)
        character = std::isalnum(static_cast<unsigned char>(character)) ? character : '_';
    return name;
}

} // namespace sarn_test
