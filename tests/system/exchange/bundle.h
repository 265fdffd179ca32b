// SPDX-License-Identifier: Apache-2.0
// What one build writes for the others to read: named items in two text files, and signed files beside them.
#pragma once

#include "support/vectors.h"

#include "ul/path.h"

#include <map>
#include <string>

namespace sarn_test {

/// Items by name. Their file has a line "name = hexadecimal digits" for each, in order, so that two of them can be
/// compared byte by byte.
using Items = std::map<std::string, Bytes>;

struct Bundle {
    /// What every build must make alike.
    Items exact;
    /// What differs each time: it holds random bytes.
    Items random;
};

// Each family adds its items, but for those that this build cannot make, such as those of a cipher that its libcrypto
// lacks.
void addCiphers(Bundle& bundle);
void addDigestStates(Bundle& bundle);
void addKeysAndEncodings(Bundle& bundle);

/// Whether the random item called `name` decrypts to what it was made of.
bool decrypts(const std::string& name, const Bytes& encrypted);

/// Signed files, signed configurations and their signature files, in `folder`.
void writeSignedFiles(const std::string& folder);
/// Verifies and reads them. Throws std::runtime_error with the name of the first one that is not as it should be.
/// Returns how many there are.
int checkSignedFiles(const std::string& folder);

/// Throws unless `condition` holds.
void require(bool condition, const std::string& item);

} // namespace sarn_test
