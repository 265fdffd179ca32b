// SPDX-License-Identifier: Apache-2.0
#include "states.h"
#include "targets.h"

namespace sarn_fuzz {

void fuzzStateOfChecksum(const std::uint8_t* data, std::size_t size) {
    constexpr const char* ids[] = {"adler32", "crc32"};
    Input input(data, size);
    const unsigned choice = input.take();
    checkState(ids[choice % (sizeof ids / sizeof *ids)], input);
}

} // namespace sarn_fuzz
