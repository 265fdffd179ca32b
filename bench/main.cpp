// SPDX-License-Identifier: Apache-2.0
// usage: sarn_bench full|quick|threads ROW_PATTERN
// One round: measures the rows beside the raw calls of libcrypto and zlib. verdict.py runs it.
#include "measure.h"
#include "rows.h"

#include <cstdio>
#include <exception>
#include <string>

int main(int count, char** words) try {
    const std::string scope = count == 3 ? words[1] : "";
    if (scope != "full" && scope != "quick" && scope != "threads") {
        std::fputs("usage: sarn_bench full|quick|threads ROW_PATTERN\n", stderr);
        return 2;
    }
    bench::select(words[2], scope);
    bench::compareCiphers();
    bench::compareDigests();
    bench::compareKeys();
    bench::compareBase64();
    bench::compareSignatures();
    bench::compareLookUps();
    if (scope == "full")
        bench::compareStreams();
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
