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

// Each family adds its items, and later takes those of another build apart: `check` throws std::runtime_error with the
// name of the first item that is not as it should be, and returns how many it looked at. Items that the build which
// reads cannot make, such as those of a cipher that its libcrypto lacks, are left out and not counted.

void addCiphers(Bundle& bundle);
int checkCiphers(const Bundle& bundle);

void addDigestStates(Bundle& bundle);
int checkDigestStates(const Bundle& bundle);

void addKeysAndEncodings(Bundle& bundle);
int checkKeysAndEncodings(const Bundle& bundle);

/// Signed files, signed configurations and their signature files, in `folder`.
void writeSignedFiles(const std::string& folder);
int checkSignedFiles(const std::string& folder);

/// Throws unless `condition` holds.
void require(bool condition, const std::string& item);
/// The item called `name`. Throws if there is none.
const Bytes& getItem(const Items& items, const std::string& name);

} // namespace sarn_test
