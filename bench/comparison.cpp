// SPDX-License-Identifier: Apache-2.0
#include "comparison.h"

#include "results.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <regex>
#include <utility>

#ifdef __linux__
#include <sched.h>
#endif

namespace bench {

namespace {

constexpr char rawSide[] = "raw";
constexpr char ourSide[] = "sarn";
// The name of a benchmark consists of its cell and its side.
constexpr char separator = '|';

bool g_isQuick = false;

std::vector<Cell>& getCells() {
    static std::vector<Cell> cells;
    return cells;
}

/// Keeps the median of each benchmark.
class MedianReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median")
                keep(run.run_name.function_name, run.GetAdjustedRealTime());
        }
    }

private:
    static void keep(const std::string& name, double time) {
        const std::size_t at = name.rfind(separator);
        const std::string side = name.substr(at + 1);
        for (Cell& cell : getCells()) {
            if (cell.name == name.substr(0, at))
                (side == rawSide ? cell.raw : side == ourSide ? cell.ours : cell.peers[side]) = time;
        }
    }
};

void registerSide(const std::string& name, const std::string& side, Work work) {
    benchmark::RegisterBenchmark((name + separator + side).c_str(), [work = std::move(work)](benchmark::State& state) {
        for (auto _ : state)
            work();
    });
}

/// A regular expression that matches only the sides of one cell.
std::string getPattern(const std::string& name) {
    const std::string special = "\\.[](){}*+?^$|";
    std::string pattern = "^";
    for (const char character : name) {
        if (special.find(character) != std::string::npos)
            pattern += '\\';
        pattern += character;
    }
    return pattern + "\\|";
}

/// Runs the cells one by one. The sides of a cell are interleaved within a second or two, so that a machine whose speed
/// changes favours none.
void runCells() {
    const std::string filter = benchmark::GetBenchmarkFilter();
    const std::regex wanted(filter.empty() || filter == "all" ? "." : filter);
    for (const Cell& cell : getCells()) {
        if (!std::regex_search(cell.name, wanted))
            continue;
        MedianReporter reporter;
        benchmark::RunSpecifiedBenchmarks(&reporter, getPattern(cell.name));
        std::fputc('.', stderr);
    }
    std::fputc('\n', stderr);
}

/// Keeps the process on one processor, so that its caches stay warm.
void pin() {
#ifdef __linux__
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(sched_getcpu(), &set);
    sched_setaffinity(0, sizeof set, &set);
#endif
}

} // namespace

void compare(const std::string& name, int bytes, Work raw, Work ours, Goal goal) {
    getCells().push_back({name, bytes, goal, 0, 0, {}});
    registerSide(name, rawSide, std::move(raw));
    registerSide(name, ourSide, std::move(ours));
}

void addPeer(const std::string& name, const std::string& peer, Work work) {
    if (work)
        registerSide(name, peer, std::move(work));
}

bool isQuick() {
    return g_isQuick;
}

void setQuick(bool isQuick) {
    g_isQuick = isQuick;
}

int run(int count, char** words, const std::string& folder) {
    // The command line overrides these defaults.
    std::vector<std::string> arguments = {words[0],
                                          g_isQuick ? "--benchmark_repetitions=11" : "--benchmark_repetitions=31",
                                          g_isQuick ? "--benchmark_min_time=0.005" : "--benchmark_min_time=0.008",
                                          "--benchmark_enable_random_interleaving=true"};
    arguments.insert(arguments.end(), words + 1, words + count);
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    int size = static_cast<int>(pointers.size());
    benchmark::Initialize(&size, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(size, pointers.data()))
        return 2;
    pin();
    runCells();

    printTables(getCells());
    writeCSV(folder + "/results.csv", getCells());
    writeChart(folder + "/chart.svg", getCells());
    const auto asked = [](const Cell& cell) { return cell.wasRun() && cell.hasGoal(); };
    const auto met = [&](const Cell& cell) { return asked(cell) && cell.meetsGoal(); };
    const auto number = [](const auto& which) { return std::count_if(getCells().begin(), getCells().end(), which); };
    std::printf("goals met: %td of %td\n", number(met), number(asked));
    return 0;
}

} // namespace bench
