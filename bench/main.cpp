// SPDX-License-Identifier: Apache-2.0
// Compares the library with the raw calls that it stands for. --benchmark_filter=REGEX picks some.
#include "comparison.h"
#include "families.h"

int main(int count, char** words) {
    bench::registerCiphers();
    bench::registerDigests();
    bench::registerKeys();
    bench::registerSignatures();
    return bench::run(count, words);
}
