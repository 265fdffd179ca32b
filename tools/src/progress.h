// SPDX-License-Identifier: Apache-2.0
// A bar for work that takes more than a second.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace tool {

/// Draws a line on standard error if that is a terminal, and removes it on destruction.
class Progress {
public:
    /// \param total in bytes; -1 if it is unknown
    Progress(const std::string& name, std::int64_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void add(int bytes);

private:
    using Clock = std::chrono::steady_clock;

    void draw();

    std::string m_name;
    std::int64_t m_total;
    std::int64_t m_done = 0;
    bool m_isShown;
    bool m_isDrawn = false;
    Clock::time_point m_next = Clock::now() + std::chrono::seconds(1);
};

} // namespace tool
