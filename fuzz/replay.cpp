// SPDX-License-Identifier: Apache-2.0
// Runs a target over the files of a folder: sarn_fuzz_replay TARGET FOLDER
#include "targets.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

static_assert(std::size(sarn_fuzz::targets) == SARN_FUZZ_TARGETS, "CMakeLists.txt lists each target of targets.h");

constexpr std::chrono::milliseconds limit{1000};

std::vector<char> read(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Runs the target over one file; false if it takes too long.
bool runFile(sarn_fuzz::Target run, const std::filesystem::path& path) {
    const std::vector<char> content = read(path);
    // A copy of exactly this size, so that the address sanitizer sees every byte too far.
    const std::vector<std::uint8_t> input(content.begin(), content.end());
    const auto start = std::chrono::steady_clock::now();
    run(input.data(), input.size());
    if (std::chrono::steady_clock::now() - start <= limit)
        return true;
    std::fprintf(stderr, "%s takes more than a second\n", path.string().c_str());
    return false;
}

} // namespace

int main(int count, char** arguments) {
    const sarn_fuzz::Target run = count == 3 ? sarn_fuzz::findTarget(arguments[1]) : nullptr;
    if (!run) {
        std::fprintf(stderr, "usage: sarn_fuzz_replay TARGET FOLDER\n");
        return 2;
    }
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[2])) {
        // Before the run, so that the input of a crash is known.
        std::printf("%s\n", entry.path().filename().string().c_str());
        std::fflush(stdout);
        if (!runFile(run, entry.path()))
            return 1;
        ++files;
    }
    std::printf("%d inputs hold the property of %s\n", files, arguments[1]);
    return files > 0 ? 0 : 1;
}
