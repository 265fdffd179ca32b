// SPDX-License-Identifier: Apache-2.0
// Paths as this system's calls take them.
#pragma once

#include "ul/path.h"

#include <string>

namespace ul {

/// The name of a file on drive `Z:`, which stands for "/".
/// \throws CFileError, naming `operation`, for any other root and for a name that cannot be written as UTF-8.
std::string toNativePath(const String& operation, const CWindowsPath& path);

} // namespace ul
