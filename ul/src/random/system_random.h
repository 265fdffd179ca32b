// SPDX-License-Identifier: Apache-2.0
// The operating system's cryptographic generator.
#pragma once

#include <cstddef>

namespace ul {

/// Fills `size` bytes, or raises the error that CMTRand::randData() documents.
void fillFromSystemGenerator(unsigned char* data, std::size_t size);

} // namespace ul
