// SPDX-License-Identifier: Apache-2.0
// The steps of a backup host, from its signed configuration to restored files.
#pragma once

#include "host_files.h"
#include "manifest.h"
#include "report.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace demo {

/// Writes a configuration and its signature, as an administrator of backups would.
void writeConfiguration(const WorkFolder& folder, const std::filesystem::path& source, const ul::String& cipher);

/// The two keys of a backup: one encrypts, the other authenticates the manifest.
struct Keys {
    ul::PC<Key> encryption;
    ul::PC<Key> manifest;
};

/// Derives the keys, or takes them from the cache. Each has its own salt.
Keys getKeys(sarn::CPasswordKeyCache& cache, const Manifest& manifest);

/// Figures of a run over all files.
struct Totals {
    std::int64_t bytesOut = 0;
    Throughput throughput;
};

/// Digests and encrypts each file and notes it in the manifest, under its name below the folder that is backed up.
Totals storeFiles(const WorkFolder& folder, const std::filesystem::path& source,
                  const std::vector<std::filesystem::path>& files, const Key& key, Manifest& manifest);

/// Decrypts each file of the manifest and compares its digest with the one noted there and its content with the
/// original. Appends the names of those that differ to `different`.
Totals restoreFiles(const WorkFolder& folder, const std::vector<std::filesystem::path>& originals, const Key& key,
                    const Manifest& manifest, std::vector<std::string>& different);

/// Restores one encrypted copy to `restored`.
/// \throws ul::CError if the key is wrong, the copy is damaged, or its digest is not `expectedDigest`.
void restoreFile(const ul::String& cipher, const Key& key, const std::filesystem::path& copy,
                 const std::filesystem::path& restored, const std::string& expectedDigest, const Progress& progress);

} // namespace demo
