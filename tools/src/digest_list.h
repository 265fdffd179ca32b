// SPDX-License-Identifier: Apache-2.0
// Lists of digests, in the form of sha256sum.
#pragma once

#include <string>

namespace tool {

/// A line of a list.
std::string formatDigest(const std::string& digest, const std::string& name);

/// Compares each file of a list with its digest and prints the result. Returns the exit status.
int checkList(const std::string& id, const std::string& list, bool isJson);

} // namespace tool
