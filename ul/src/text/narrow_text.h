// SPDX-License-Identifier: Apache-2.0
// Wide text to bytes.
#pragma once

#include <cstddef>

namespace ul {

/// Writes the low byte of each of `size` characters to `out`. Returns whether every character fits one byte; what is
/// written for one that does not is undefined.
bool narrowText(const wchar_t* text, std::size_t size, char* out) noexcept;

} // namespace ul
