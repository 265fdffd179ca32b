// SPDX-License-Identifier: Apache-2.0
// Pairs of benchmarks: raw calls of another library and the same work done by this one.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace bench {

/// One piece of work, run again and again.
using Work = std::function<void()>;

/// Registers the two sides of a comparison called `name`. Both run in one process, interleaved, and the report shows
/// the ratio of their median times.
/// \param bytes how much data one run handles
void compare(const std::string& name, int bytes, Work raw, Work ours);

/// Runs everything that was registered and prints the table of ratios. Returns the exit status of the program.
int run(int count, char** words);

} // namespace bench
