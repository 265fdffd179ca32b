// SPDX-License-Identifier: Apache-2.0
// What becomes of a backup in which somebody changed one byte.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace demo {

/// Changes the byte in the middle of a file, runs `use`, and changes it back. Returns what `use` raised, or an empty
/// text if it noticed nothing.
std::string changeOneByte(const std::filesystem::path& file, const std::function<void()>& use);

} // namespace demo
