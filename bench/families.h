// SPDX-License-Identifier: Apache-2.0
// The comparisons of each family.
#pragma once

#include "comparison.h"

#include <vector>

namespace bench {

/// The sizes in bytes for which operations on data are timed.
inline std::vector<int> getSizes() {
    return isQuick() ? std::vector<int>{16, 4096} : std::vector<int>{16, 256, 4096, 65536, 1 << 20};
}

void registerCiphers();
void registerDigests();
void registerKeys();
void registerSignatures();
void registerRegistries();

} // namespace bench
