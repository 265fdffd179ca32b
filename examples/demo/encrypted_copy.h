// SPDX-License-Identifier: Apache-2.0
// Encrypted copies of files, as a backup program would keep them.
//
// A copy is a row of chunks. A chunk is a boolean that is true for the last one, the size of its ciphertext as a 32-bit
// number, and the ciphertext with its own random IV ahead, at most 1 MiB of the file each.
#pragma once

#include "manifest.h"
#include "report.h"

#include <sarn/sarn.h>

#include <cstdint>
#include <filesystem>

namespace demo {

/// Writes the encrypted copy of `source` to `copy`, feeding what it reads to `digest` as well, which it finishes.
/// Returns the size of the copy in bytes.
std::int64_t encryptFile(sarn::ICipher& cipher, const Key& key, sarn::IDigest& digest,
                         const std::filesystem::path& source, const std::filesystem::path& copy,
                         const Progress& progress);

/// Writes what the encrypted `copy` holds to `restored`, and feeds it to `digest` as well, which it finishes.
/// \throws ul::CError if the key is wrong or the copy is damaged
void decryptFile(sarn::ICipher& cipher, const Key& key, sarn::IDigest& digest, const std::filesystem::path& copy,
                 const std::filesystem::path& restored, const Progress& progress);

/// Whether two files hold the same bytes.
bool isSameContent(const std::filesystem::path& left, const std::filesystem::path& right);

} // namespace demo
