// SPDX-License-Identifier: Apache-2.0
#include "comparison.h"
#include "results.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#ifdef __linux__
#include <sched.h>
#endif

namespace bench {

namespace {

constexpr char rawSide[] = "raw";
constexpr char ourSide[] = "sarn";
// Names of benchmarks are cell and side.
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
    void Finalize() override { std::fputc('\n', stderr); }

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

/// A dot for every hundred runs: the reports all come at the end.
void showProgress() {
    static int count = 0;
    if (++count % 100 == 0)
        std::fputc('.', stderr);
}

void registerSide(const std::string& name, const std::string& side, Work work) {
    benchmark::RegisterBenchmark((name + separator + side).c_str(), [work = std::move(work)](benchmark::State& state) {
        showProgress();
        for (auto _ : state)
            work();
    });
}

/// Keeps the process on one processor, whose caches then stay warm.
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
    // Defaults that the command line overrides.
    std::vector<std::string> arguments = {words[0],
                                          g_isQuick ? "--benchmark_repetitions=7" : "--benchmark_repetitions=15",
                                          g_isQuick ? "--benchmark_min_time=0.01" : "--benchmark_min_time=0.02",
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
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

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
