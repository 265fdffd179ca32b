// SPDX-License-Identifier: Apache-2.0
#include "progress.h"

#include "report.h"
#include "system.h"

#include <algorithm>

namespace tool {

namespace {

constexpr int barWidth = 30;
constexpr std::size_t nameWidth = 36;
// Carriage return, and an order to clear the rest of the line.
constexpr char lineStart[] = "\r\x1b[K";

} // namespace

Progress::Progress(const std::string& name, std::int64_t total)
    : m_name(toShownText(name)), m_total(total), m_isShown(isTerminal(2)) {}

Progress::~Progress() {
    if (m_isDrawn)
        writeSome(2, lineStart, sizeof lineStart - 1);
}

void Progress::add(int bytes) {
    m_done += bytes;
    if (m_isShown && Clock::now() >= m_next)
        draw();
}

void Progress::draw() {
    m_next = Clock::now() + std::chrono::milliseconds(200);
    m_isDrawn = true;
    std::string line = lineStart;
    if (m_total > 0) {
        const std::int64_t done = std::min(m_done, m_total);
        const auto filled = static_cast<std::size_t>(done * barWidth / m_total);
        line += "[" + std::string(filled, '#') + std::string(barWidth - filled, '.') + "] ";
        line += std::to_string(done * 100 / m_total) + " %  ";
    } else {
        line += std::to_string(m_done >> 20) + " MiB  ";
    }
    line += m_name.size() > nameWidth ? "..." + m_name.substr(m_name.size() - nameWidth + 3) : m_name;
    writeSome(2, line.data(), static_cast<int>(line.size()));
}

} // namespace tool
