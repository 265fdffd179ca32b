// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ul/log.h"

#include <mutex>
#include <string>
#include <vector>

namespace sarn_test {

/// While it lives, stores the lines of the log, in UTF-8, instead of printing them.
class LogCapture {
public:
    LogCapture() : m_previous(ul::setLogHandler([this](const ul::String& line) { add(line); })) {}
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    ~LogCapture() { ul::setLogHandler(m_previous); }

    std::vector<std::string> getLines() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_lines;
    }

private:
    void add(const ul::String& line) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.push_back(line.toUTF8());
    }

    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
    ul::LogHandler m_previous;
};

} // namespace sarn_test
