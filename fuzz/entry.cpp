// SPDX-License-Identifier: Apache-2.0
// The entry of a fuzzer. FUZZ_TARGET is the function that it runs.
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    sarn_fuzz::FUZZ_TARGET(data, size);
    return 0;
}
