// SPDX-License-Identifier: Apache-2.0
#include "report.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace demo {

namespace {

constexpr int barWidth = 30;
constexpr std::size_t nameWidth = 36;

bool isTerminal() {
#ifdef _WIN32
    return _isatty(1) != 0;
#else
    return isatty(1) != 0;
#endif
}

} // namespace

std::string Throughput::describe() const {
    if (m_seconds <= 0)
        return "-";
    char text[32];
    std::snprintf(text, sizeof text, "%.0f MB/s", static_cast<double>(m_bytes) / m_seconds / 1e6);
    return text;
}

ProgressLine::ProgressLine(std::int64_t total) : m_total(total), m_isTerminal(isTerminal()) {}

void ProgressLine::add(std::int64_t bytes, const std::string& what) {
    m_done += bytes;
    draw(what);
}

void ProgressLine::draw(const std::string& what) {
    const int percent = m_total > 0 ? static_cast<int>(100 * std::min(m_done, m_total) / m_total) : 100;
    if (!m_isTerminal || percent == m_shownPercent)
        return;
    m_shownPercent = percent;
    const auto filled = static_cast<std::size_t>(percent * barWidth / 100);
    std::string name = what.size() > nameWidth ? "..." + what.substr(what.size() - nameWidth + 3) : what;
    name.resize(nameWidth, ' ');
    std::cout << "\r  [" << std::string(filled, '#') << std::string(barWidth - filled, '.') << "] " << percent << " % "
              << name << std::flush;
}

void ProgressLine::finish() {
    if (m_isTerminal)
        std::cout << "\r" << std::string(barWidth + nameWidth + 12, ' ') << "\r" << std::flush;
}

std::string withSeparators(std::int64_t number) {
    std::string text = std::to_string(number);
    for (std::size_t position = text.size(); position > 3; position -= 3)
        text.insert(position - 3, ",");
    return text;
}

} // namespace demo
