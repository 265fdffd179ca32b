// SPDX-License-Identifier: Apache-2.0
// Cells of a comparison: the same work by raw libcrypto calls, by this library, and by other libraries.
#pragma once

#include <functional>
#include <string>

namespace bench {

/// Work that is repeated. It is empty if a library does not offer it.
using Work = std::function<void()>;

/// Limits for the library's time. A limit of 0 does not apply. Meeting one of the others is enough.
struct Goal {
    /// A multiple of the raw time.
    double ratio = 0;
    /// Nanoseconds in addition to the raw time.
    double more = 0;
    /// Nanoseconds in all.
    double total = 0;
};

inline Goal atMostTimes(double ratio) {
    return {ratio, 0, 0};
}
inline Goal atMostMore(double nanoseconds) {
    return {0, nanoseconds, 0};
}
inline Goal atMost(double nanoseconds) {
    return {0, 0, nanoseconds};
}

/// Registers the cell called `name`. All sides run interleaved in one process.
/// \param bytes the number of bytes that one run handles
void compare(const std::string& name, int bytes, Work raw, Work ours, Goal goal = {});

/// Adds another library's time to the cell called `name`. Empty work adds nothing.
void addPeer(const std::string& name, const std::string& peer, Work work);

/// Whether to run only the most informative sizes and operations.
bool isQuick();
void setQuick(bool isQuick);

/// Runs the registered cells, prints the tables and the number of goals that were met, and writes results.csv and
/// chart.svg to `folder`. Returns the exit status of the program.
int run(int count, char** words, const std::string& folder);

} // namespace bench
