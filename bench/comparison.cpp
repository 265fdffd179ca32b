// SPDX-License-Identifier: Apache-2.0
#include "comparison.h"

#include <cstdio>
#include <map>
#include <vector>

namespace bench {

namespace {

constexpr char rawSide[] = "/raw";
constexpr char ourSide[] = "/sarn";

std::vector<std::string>& getNames() {
    static std::vector<std::string> names;
    return names;
}

/// Keeps the median of each benchmark and prints nothing but a dot now and then.
class MedianReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median")
                m_medians[run.run_name.function_name] = run.GetAdjustedRealTime();
        }
        std::fputc('.', stderr);
    }
    void Finalize() override { std::fputc('\n', stderr); }

    double get(const std::string& name) const {
        const auto found = m_medians.find(name);
        return found == m_medians.end() ? 0 : found->second;
    }

private:
    std::map<std::string, double> m_medians;
};

void registerSide(const std::string& name, int bytes, const Work& work) {
    benchmark::RegisterBenchmark(name.c_str(), [work, bytes](benchmark::State& state) {
        for (auto _ : state)
            work();
        state.SetBytesProcessed(state.iterations() * bytes);
    });
}

} // namespace

void compare(const std::string& name, int bytes, Work raw, Work ours) {
    getNames().push_back(name);
    registerSide(name + rawSide, bytes, raw);
    registerSide(name + ourSide, bytes, ours);
}

int run(int count, char** words) {
    // Defaults that the command line overrides.
    std::vector<std::string> arguments = {words[0], "--benchmark_repetitions=15", "--benchmark_min_time=0.03",
                                          "--benchmark_enable_random_interleaving=true"};
    arguments.insert(arguments.end(), words + 1, words + count);
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    int size = static_cast<int>(pointers.size());
    benchmark::Initialize(&size, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(size, pointers.data()))
        return 2;
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    std::printf("%-44s %12s %12s %8s %10s\n", "operation", "raw ns", "sarn ns", "ratio", "more ns");
    for (const std::string& name : getNames()) {
        const double raw = reporter.get(name + rawSide);
        const double ours = reporter.get(name + ourSide);
        if (raw > 0 && ours > 0)
            std::printf("%-44s %12.1f %12.1f %8.3f %10.1f\n", name.c_str(), raw, ours, ours / raw, ours - raw);
    }
    return 0;
}

} // namespace bench
