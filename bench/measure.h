// SPDX-License-Identifier: Apache-2.0
// Times of the library's operations and of the raw calls that they stand for, in pairs. A row is an operation; its
// points are its sizes.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

using Bytes = std::vector<unsigned char>;
/// Work that is repeated.
using Work = std::function<void()>;
/// Makes the work of one thread, with buffers of its own.
using WorkMaker = std::function<Work()>;

/// Selects the rows that contain a match of a regular expression.
/// \param scope "full"; "quick", which has fewer sizes; or "threads" for the rows with two threads, which need the
///              processors for themselves and are in no other scope
void select(const std::string& pattern, const std::string& scope);

/// Whether to measure `row`.
bool isSelected(const std::string& row);

/// The sizes in bytes at which to measure `row`, all multiples of 16; none if it is not selected.
std::vector<int> getSizes(const std::string& row);

/// Measures one point of a selected row and prints a line "row;point;raw;ours;yardstick" for each pair, in nanoseconds
/// of processor time. Requires: both do the same work, on the same buffers if possible, because the place of a buffer
/// can matter more than the library.
void compare(const std::string& row, double point, const Work& raw, const Work& ours);

/// Measures how many times longer a call takes while a second thread makes the same calls, and prints these two
/// numbers in place of times. Does nothing if the row is not selected.
void compareThreads(const std::string& row, const WorkMaker& raw, const WorkMaker& ours);

/// The median of how many times longer one piece of work takes than another.
double findRatio(const Work& base, const Work& work);

/// Ends the program unless a call has succeeded: the time of a failure means nothing.
void require(bool isDone);

/// Makes the compiler compute `result`, which it cannot see here.
void keep(const void* result);

} // namespace bench
