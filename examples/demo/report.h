// SPDX-License-Identifier: Apache-2.0
// What the demo shows on the screen.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace demo {

/// Told how many further bytes have been worked on.
using Progress = std::function<void(std::int64_t size)>;

/// The time that `work` takes, in seconds.
template <class Work>
double measureSeconds(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Bytes and the time that went into them.
class Throughput {
public:
    /// Runs `work` on the clock.
    template <class Work>
    void measure(Work work) {
        m_seconds += measureSeconds(work);
    }
    void addBytes(std::int64_t count) { m_bytes += count; }
    std::int64_t getBytes() const { return m_bytes; }
    /// For example "512 MB/s".
    std::string describe() const;

private:
    std::int64_t m_bytes = 0;
    double m_seconds = 0;
};

/// A line that shows how far the work has come; it redraws itself on a terminal and stays quiet in a log.
class ProgressLine {
public:
    explicit ProgressLine(std::int64_t total);
    void add(std::int64_t bytes, const std::string& what);
    void finish();

private:
    void draw(const std::string& what);

    std::int64_t m_total;
    std::int64_t m_done = 0;
    int m_shownPercent = -1;
    bool m_isTerminal;
};

/// For example "1,234,567".
std::string withSeparators(std::int64_t number);

} // namespace demo
