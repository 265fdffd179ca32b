// SPDX-License-Identifier: Apache-2.0
// Paths in the form of the system's calls.
#pragma once

#include "ul/path.h"

#include <string>

namespace ul {

/// The verbatim form of a path: its length is not limited, and the names of devices are ordinary file names.
std::wstring toNativePath(const CWindowsPath& path);

} // namespace ul
