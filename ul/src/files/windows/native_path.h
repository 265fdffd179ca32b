// SPDX-License-Identifier: Apache-2.0
// Paths as this system's calls take them.
#pragma once

#include "ul/path.h"

#include <string>

namespace ul {

/// The verbatim form of a path: without a limit on its length, and names of devices are those of files.
std::wstring toNativePath(const CWindowsPath& path);

} // namespace ul
