// SPDX-License-Identifier: Apache-2.0
// usage: sarn_soak threads|forks|first-use|ends COUNT
#include "support/threads.h"
#include "system/soak/soak.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace sarn_test;

constexpr int threadCount = 64;

/// Checks `count` operations on 64 threads. Returns the number of random IVs.
std::size_t runThreads(long count) {
    const Shared shared;
    std::atomic<long> left{count};
    std::mutex mutex;
    std::vector<IV> all;
    runOnThreads(threadCount, [&](int seed) {
        std::mt19937 random(static_cast<unsigned>(seed));
        std::vector<IV> ivs;
        try {
            while (--left >= 0)
                shared.use(random, ivs);
        } catch (...) {
            left = 0;
            throw;
        }
        const std::lock_guard<std::mutex> lock(mutex);
        all.insert(all.end(), ivs.begin(), ivs.end());
    });
    checkNoneIsRepeated(all);
    return all.size();
}

int run(const std::string& what, long count) {
    if (what == "threads") {
        const auto start = std::chrono::steady_clock::now();
        const std::size_t drawn = runThreads(count);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        std::printf("%ld checked operations on %d threads in %.1f s, none wrong; %zu IVs, none twice\n", count,
                    threadCount, time.count(), drawn);
    } else if (what == "forks") {
        const std::size_t drawn = runForks(static_cast<int>(count));
        std::printf("%ld forks at random moments, no hang; %zu draws of parent and children, none twice\n", count,
                    drawn);
    } else if (what == "first-use") {
        runFirstUses(static_cast<int>(count), threadCount);
        std::printf("%ld processes in which %d threads first used every process-wide object at once, none wrong\n",
                    count, threadCount);
    } else if (what == "ends") {
        runEnds(static_cast<int>(count));
        std::printf("%ld processes whose main returned while four threads encrypted, none ended abnormally\n", count);
    } else {
        return 2;
    }
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    try {
        const int status = count == 3 ? run(arguments[1], std::atol(arguments[2])) : 2;
        if (status == 2)
            std::fprintf(stderr, "usage: sarn_soak threads|forks|first-use|ends COUNT\n");
        return status;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
