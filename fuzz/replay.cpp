// SPDX-License-Identifier: Apache-2.0
// Runs a target on the inputs of a corpus or on files, or writes each input to a file for the fuzzers:
// sarn_fuzz_replay TARGET CORPUS
// sarn_fuzz_replay --files TARGET FOLDER...
// sarn_fuzz_replay --unpack CORPUS FOLDER
#include "support/vectors.h"
#include "targets.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {

static_assert(std::size(sarn_fuzz::targets) == SARN_FUZZ_TARGETS, "CMakeLists.txt lists each target of targets.h");

constexpr std::chrono::milliseconds limit{1000};

std::vector<sarn_test::Vector> readInputs(const char* path) {
    std::ifstream file(path);
    return sarn_test::parseVectors(file, path, {"input"});
}

/// Runs the target on every input. Returns false if one takes too long.
bool replay(sarn_fuzz::Target run, const std::vector<sarn_test::Vector>& inputs) {
    for (const sarn_test::Vector& input : inputs) {
        // Printed before the run, so that the input of a crash is known.
        std::printf("%s\n", input.getSection().c_str());
        std::fflush(stdout);
        // A block of exactly this size, so that the address sanitizer notices every access beyond it.
        std::vector<unsigned char> bytes = input.getBytes("input");
        bytes.shrink_to_fit();
        const auto start = std::chrono::steady_clock::now();
        run(bytes.data(), bytes.size());
        if (std::chrono::steady_clock::now() - start > limit) {
            std::fprintf(stderr, "%s takes more than a second\n", input.getSection().c_str());
            return false;
        }
    }
    return true;
}

/// Runs the target on every file of a folder.
void runFiles(sarn_fuzz::Target run, const char* folder) {
    for (const std::filesystem::directory_entry& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        std::printf("%s\n", entry.path().filename().string().c_str());
        run(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
}

void unpack(const std::vector<sarn_test::Vector>& inputs, const std::string& folder) {
    for (const sarn_test::Vector& input : inputs) {
        std::ofstream file(folder + "/" + input.getSection(), std::ios::binary);
        file.exceptions(std::ios::badbit | std::ios::failbit);
        const std::vector<unsigned char> bytes = input.getBytes("input");
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
}

} // namespace

int main(int count, char** arguments) try {
    if (count == 4 && std::string_view(arguments[1]) == "--unpack") {
        unpack(readInputs(arguments[2]), arguments[3]);
        return 0;
    }
    const bool isOfFiles = count > 3 && std::string_view(arguments[1]) == "--files";
    const sarn_fuzz::Target run =
        isOfFiles || count == 3 ? sarn_fuzz::findTarget(arguments[isOfFiles ? 2 : 1]) : nullptr;
    if (!run) {
        std::fprintf(stderr, "usage: sarn_fuzz_replay TARGET CORPUS\n"
                             "       sarn_fuzz_replay --files TARGET FOLDER...\n"
                             "       sarn_fuzz_replay --unpack CORPUS FOLDER\n");
        return 2;
    }
    if (isOfFiles) {
        for (int i = 3; i < count; ++i)
            runFiles(run, arguments[i]);
        return 0;
    }
    const std::vector<sarn_test::Vector> inputs = readInputs(arguments[2]);
    if (!replay(run, inputs))
        return 1;
    std::printf("%zu inputs hold the property of %s\n", inputs.size(), arguments[1]);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "sarn_fuzz_replay: %s\n", error.what());
    return 2;
}
