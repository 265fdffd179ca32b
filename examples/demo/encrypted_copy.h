// SPDX-License-Identifier: Apache-2.0
// Encrypted copies of files, as a backup program would keep them: a random IV and the ciphertext. The digests that the
// signed manifest holds prove that a copy is whole.
#pragma once

#include "manifest.h"
#include "report.h"

#include <filesystem>
#include <string>

namespace demo {

/// Writes the encrypted copy of `source` to `copy`. Returns the digest of the file.
std::string encryptFile(const ul::String& cipher, const Key& key, const std::filesystem::path& source,
                        const std::filesystem::path& copy, const Progress& progress);

/// Writes what the encrypted `copy` holds to `restored`. Returns the digest of that.
/// \throws ul::CError if the end of the copy shows that the key is wrong or the copy damaged
std::string decryptFile(const ul::String& cipher, const Key& key, const std::filesystem::path& copy,
                        const std::filesystem::path& restored, const Progress& progress);

/// Whether two files hold the same bytes.
bool isSameContent(const std::filesystem::path& left, const std::filesystem::path& right);

} // namespace demo
