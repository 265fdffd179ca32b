// SPDX-License-Identifier: Apache-2.0
// Paths in the form of the system's calls.
#pragma once

#include "ul/path.h"

#include <string>

namespace ul {

/// Converts a path on drive `Z:`, which stands for "/".
/// \throws CFileError, naming `operation`, for any other root and for a name that cannot be encoded as UTF-8.
std::string toNativePath(const String& operation, const CWindowsPath& path);

} // namespace ul
