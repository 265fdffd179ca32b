// SPDX-License-Identifier: Apache-2.0
// Shows that a changed backup is detected.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace demo {

/// Changes the byte in the middle of a file, runs `use`, and changes it back. Returns the message of the
/// error that `use` raised, or an empty text.
std::string changeOneByte(const std::filesystem::path& file, const std::function<void()>& use);

} // namespace demo
