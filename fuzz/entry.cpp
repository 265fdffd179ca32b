// SPDX-License-Identifier: Apache-2.0
// The entry point of a fuzzer. FUZZ_TARGET is the name of its target.
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr sarn_fuzz::Target run = sarn_fuzz::findTarget(FUZZ_TARGET);
    static_assert(run != nullptr, "targets.h has a row for each target of CMakeLists.txt");
    run(data, size);
    return 0;
}
