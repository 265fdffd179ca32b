// SPDX-License-Identifier: Apache-2.0
#include "support/markdown_table.h"

#include <fstream>
#include <stdexcept>

namespace sarn_test {

namespace {

std::string trim(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

/// The texts between backticks.
std::vector<std::string> getCodeSpans(const std::string& cell) {
    std::vector<std::string> spans;
    std::size_t start = 0;
    while ((start = cell.find('`', start)) != std::string::npos) {
        const std::size_t end = cell.find('`', start + 1);
        if (end == std::string::npos)
            throw std::runtime_error("a backtick has no second: " + cell);
        spans.push_back(cell.substr(start + 1, end - start - 1));
        start = end + 1;
    }
    return spans;
}

MarkdownRow parseRow(const std::string& text, int line) {
    MarkdownRow row;
    row.line = line;
    std::size_t start = 1;
    for (std::size_t end; (end = text.find('|', start)) != std::string::npos; start = end + 1) {
        row.cells.push_back(trim(text.substr(start, end - start)));
        row.code.push_back(getCodeSpans(row.cells.back()));
    }
    return row;
}

} // namespace

std::vector<MarkdownRow> readMarkdownTable(const std::string& page, const std::string& heading) {
    const std::string path = std::string(SARN_DOCS_DIR) + "/" + page;
    std::ifstream file(path);
    std::vector<MarkdownRow> rows;
    bool isInside = false;
    std::string line;
    std::string previous;
    for (int number = 1; std::getline(file, line); previous = line, ++number) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const bool isRow = line.compare(0, 1, "|") == 0;
        if (line.compare(0, 2, "|-") == 0)
            isInside = parseRow(previous, number).cells.front() == heading;
        else if (isInside && isRow)
            rows.push_back(parseRow(line, number));
        else if (isInside)
            break;
    }
    if (rows.empty())
        throw std::runtime_error("no table headed " + heading + " in " + path);
    return rows;
}

} // namespace sarn_test
