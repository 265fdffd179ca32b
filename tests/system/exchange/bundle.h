// SPDX-License-Identifier: Apache-2.0
// The data that builds exchange: named items in two text files, and signed files.
#pragma once

#include "support/vectors.h"

namespace sarn_test {

/// Items by name. Their file has a line "name = hexadecimal digits" for each in order, so files can be compared.
using Items = std::map<std::string, Bytes>;

struct Bundle {
    /// Every build must write the same.
    Items exact;
    /// They contain random bytes and differ each time.
    Items random;
};

// Each family adds the items that this build supports; its libcrypto may lack a cipher.
void addCiphers(Bundle& bundle);
void addDigestStates(Bundle& bundle);
void addKeysAndEncodings(Bundle& bundle);

/// Whether the random item called `name` decrypts to its plaintext.
bool decrypts(const std::string& name, const Bytes& encrypted);

/// Writes signed files, signed configurations and their signature files to `folder`.
void writeSignedFiles(const std::string& folder);
/// Verifies and reads them. Returns their number, or throws std::runtime_error with the name of the first wrong one.
int checkSignedFiles(const std::string& folder);

/// Throws unless `condition` holds.
void require(bool condition, const std::string& item);

} // namespace sarn_test
