// SPDX-License-Identifier: Apache-2.0
// The output of the demo.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace demo {

/// Called with the number of bytes that were processed since the previous call.
using Progress = std::function<void(std::int64_t size)>;

/// The time that `work` takes, in seconds.
template <class Work>
double measureSeconds(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// A number of bytes and the time that they took.
class Throughput {
public:
    /// Runs `work` and adds the time that it takes.
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

/// A progress line. It redraws itself on a terminal and prints nothing elsewhere.
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
