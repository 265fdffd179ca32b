// SPDX-License-Identifier: Apache-2.0
// usage: sarn_bench FOLDER full|quick [OPTIONS OF GOOGLE BENCHMARK]
// Compares the library with the raw calls that it makes and with other libraries. --benchmark_filter=REGEX selects
// cells. Writes results.csv and chart.svg to the folder.
#include "comparison.h"
#include "families.h"

#include <cstdio>
#include <string>

int main(int count, char** words) {
    if (count < 3) {
        std::fputs("usage: sarn_bench FOLDER full|quick [--benchmark_filter=REGEX ...]\n", stderr);
        return 2;
    }
    const std::string folder = words[1];
    bench::setQuick(std::string(words[2]) == "quick");
    bench::registerCiphers();
    bench::registerDigests();
    bench::registerKeys();
    bench::registerSignatures();
    bench::registerRegistries();
    words[2] = words[0];
    return bench::run(count - 2, words + 2, folder);
}
