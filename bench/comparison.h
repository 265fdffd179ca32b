// SPDX-License-Identifier: Apache-2.0
// Cells of a comparison: the same work done by raw libcrypto calls, by this library, and by libraries that a user would
// pick instead.
#pragma once

#include <functional>
#include <string>

namespace bench {

/// One piece of work, run again and again. An empty one stands for what a library does not offer.
using Work = std::function<void()>;

/// Limits for the library's time. A limit of 0 does not apply; meeting one of the others is enough.
struct Goal {
    /// Times the raw time.
    double ratio = 0;
    /// Nanoseconds above the raw time.
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

/// Registers the cell called `name`. Both sides run in one process, interleaved with all the others.
/// \param bytes how much data one run handles
void compare(const std::string& name, int bytes, Work raw, Work ours, Goal goal = {});

/// Adds another library's time to the cell called `name`. Empty work adds nothing.
void addPeer(const std::string& name, const std::string& peer, Work work);

/// Whether only the sizes and operations that tell most are wanted.
bool isQuick();
void setQuick(bool isQuick);

/// Runs what was registered: prints the tables and how many goals were met, writes results.csv and chart.svg to
/// `folder`. Returns the exit status of the program.
int run(int count, char** words, const std::string& folder);

} // namespace bench
