// SPDX-License-Identifier: Apache-2.0
#include "measure.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <regex>
#include <thread>

#include <time.h>

namespace bench {

namespace {

// Long enough that reading the clock does not count, short enough that most batches are not interrupted.
constexpr double batchTime = 150e3;
// Few pairs: rounds differ more than pairs do, so many short rounds say more than a few long ones. An even number, so
// that each of our times has a raw one before and after it: the calls become faster, because caches fill.
constexpr double pointTime = 3e6;
constexpr int fewestPairs = 4;
constexpr int mostPairs = 10;

std::regex g_pattern;
bool g_isQuick = false;
bool g_hasThreads = false;

double readClock(clockid_t clock) {
    timespec time;
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

void repeat(const Work& work, int count) {
    for (int i = 0; i < count; ++i)
        work();
}

/// The processor time of one call: others may use the processor too.
double timeCall(const Work& work, int count) {
    const double start = readClock(CLOCK_THREAD_CPUTIME_ID);
    repeat(work, count);
    return (readClock(CLOCK_THREAD_CPUTIME_ID) - start) / count;
}

/// How often to measure a point.
struct Plan {
    /// Calls that make a batch.
    int calls;
    int pairs;
};

/// Calls both sides first, which fills caches and buffers. libcrypto's first random bytes take milliseconds.
Plan makePlan(const Work& raw, const Work& ours) {
    ours();
    raw();
    double time = timeCall(raw, 1);
    if (time < batchTime)
        time = timeCall(raw, 10);
    return {std::clamp(static_cast<int>(batchTime / time), 1, 4000),
            2 * std::clamp(static_cast<int>(pointTime / time) / 2, fewestPairs / 2, mostPairs / 2)};
}

/// Work that never changes, to compare the speed of machines and moments: allocations, branches and pointers, like the
/// short calls of the library.
void useYardstick() {
    std::map<int, int> map;
    for (int i = 0; i < 8; ++i)
        map[i * 5 % 8] = i;
    keep(&map);
}

/// Measures both sides in turn. Neighbours make a pair, so that neither side is always the first.
template <class Time>
void printPairs(const std::string& row, double point, int pairs, Time time) {
    // The yardstick leaves the caches in the same state before each time, the first one too.
    timeCall(useYardstick, 20);
    double times[2] = {time(0), 0};
    for (int i = 1; i <= pairs; ++i) {
        times[i % 2] = time(i % 2);
        std::printf("%s;%.0f;%.6g;%.6g;%.5g\n", row.c_str(), point, times[0], times[1], timeCall(useYardstick, 20));
    }
}

/// The shortest of several times: a thread that is interrupted makes the other look fast or slow.
template <class Time>
double findShortest(Time time) {
    double shortest = time();
    for (int i = 0; i < 8; ++i)
        shortest = std::min(shortest, time());
    return shortest;
}

/// The time until two threads that start together are both done. Not processor time, which would leave out the time
/// spent waiting for a lock.
double timeThreads(const Work (&works)[2], int count) {
    std::atomic<int> ready{0};
    double starts[2];
    double ends[2];
    const auto run = [&](unsigned index) {
        for (++ready; ready < 2;) {
        }
        starts[index] = readClock(CLOCK_MONOTONIC);
        repeat(works[index], count);
        ends[index] = readClock(CLOCK_MONOTONIC);
    };
    std::thread second(run, 1);
    run(0);
    second.join();
    return (std::max(ends[0], ends[1]) - std::min(starts[0], starts[1])) / count;
}

} // namespace

void select(const std::string& pattern, const std::string& scope) {
    g_pattern = pattern;
    g_isQuick = scope == "quick";
    g_hasThreads = scope == "threads";
}

bool isSelected(const std::string& row) {
    const bool hasThreads = row.find("two threads") != std::string::npos;
    return hasThreads == g_hasThreads && std::regex_search(row, g_pattern);
}

std::vector<int> getSizes(const std::string& row) {
    if (!isSelected(row))
        return {};
    return g_isQuick ? std::vector<int>{16, 4096, 65536} : std::vector<int>{16, 256, 4096, 65536, 1 << 20};
}

void compare(const std::string& row, double point, const Work& raw, const Work& ours) {
    const Plan plan = makePlan(raw, ours);
    printPairs(row, point, plan.pairs, [&](int side) { return timeCall(side == 0 ? raw : ours, plan.calls); });
}

void compareThreads(const std::string& row, const WorkMaker& raw, const WorkMaker& ours) {
    if (!isSelected(row))
        return;
    const Work works[2][2] = {{raw(), raw()}, {ours(), ours()}};
    const int count = makePlan(works[0][0], works[1][0]).calls;
    printPairs(row, 2, mostPairs, [&](int side) {
        return findShortest([&] { return timeThreads(works[side], count); }) /
               findShortest([&] { return timeCall(works[side][0], count); });
    });
}

double findRatio(const Work& base, const Work& work) {
    const int count = makePlan(base, work).calls;
    std::vector<double> ratios(51);
    for (double& ratio : ratios)
        ratio = timeCall(work, count) / timeCall(base, count);
    std::nth_element(ratios.begin(), ratios.begin() + 25, ratios.end());
    return ratios[25];
}

void require(bool isDone) {
    if (!isDone)
        std::abort();
}

void keep(const void*) {}

} // namespace bench
