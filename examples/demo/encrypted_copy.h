// SPDX-License-Identifier: Apache-2.0
// Encrypted copies of files, as a backup program would store them: a random IV and the ciphertext. The digests in the
// signed manifest prove that a copy is whole.
#pragma once

#include "manifest.h"
#include "report.h"

#include <filesystem>
#include <string>

namespace demo {

/// Writes the encrypted copy of `source` to `copy`. Returns the digest of the file.
std::string encryptFile(const ul::String& cipher, const Key& key, const std::filesystem::path& source,
                        const std::filesystem::path& copy, const Progress& progress);

/// Decrypts `copy` to `restored`. Returns the digest of the restored file.
/// \throws ul::CError if the padding shows that the key is wrong or the copy is damaged.
std::string decryptFile(const ul::String& cipher, const Key& key, const std::filesystem::path& copy,
                        const std::filesystem::path& restored, const Progress& progress);

/// Whether two files contain the same bytes.
bool isSameContent(const std::filesystem::path& left, const std::filesystem::path& right);

} // namespace demo
