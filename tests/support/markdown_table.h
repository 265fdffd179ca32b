// SPDX-License-Identifier: Apache-2.0
// Tables of the documentation, whose rows are tests.
#pragma once

#include <string>
#include <vector>

namespace sarn_test {

/// One row: each cell's text, and the code within it.
struct MarkdownRow {
    int line = 0;
    std::vector<std::string> cells;
    std::vector<std::vector<std::string>> code;
};

/// The rows of the first table of docs/`page` whose first column is headed `heading`. Throws if there is none.
std::vector<MarkdownRow> readMarkdownTable(const std::string& page, const std::string& heading);

} // namespace sarn_test
