// SPDX-License-Identifier: Apache-2.0
// usage: sarn_load_time PROBE
// Prints the time from loading the library to a first digest. This program is not linked with the library.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Loads the probe and makes it compute a digest. Returns microseconds, or -1 on failure. Call it once in a process.
double loadAndCompute(const char* probe) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    void* const library = dlopen(probe, RTLD_NOW);
    const auto computeDigest = reinterpret_cast<int (*)()>(library ? dlsym(library, "computeDigest") : nullptr);
    if (!computeDigest || computeDigest() != 0xA9)
        return -1;
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

double measureInNewProcess(const char* probe) {
    int ends[2];
    if (pipe(ends) != 0)
        return -1;
    const pid_t child = fork();
    if (child == 0) {
        const double time = loadAndCompute(probe);
        _exit(write(ends[1], &time, sizeof time) == sizeof time ? 0 : 1);
    }
    close(ends[1]);
    double time = -1;
    if (read(ends[0], &time, sizeof time) != sizeof time)
        time = -1;
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return time;
}

} // namespace

int main(int count, char** words) {
    if (count != 2)
        return 2;
    std::vector<double> times;
    for (int i = 0; i < 21; ++i)
        times.push_back(measureInNewProcess(words[1]));
    std::sort(times.begin(), times.end());
    std::printf("%-44s %8.0f us\n", "loading, to the first digest", times[times.size() / 2]);
    return times.front() > 0 ? 0 : 1;
}
