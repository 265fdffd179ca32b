// SPDX-License-Identifier: Apache-2.0
// The list of the files in a backup: an INI file with an HMAC under a key derived from the password, and with a
// signature file beside it.
#pragma once

#include <sarn/host.h>

#include <filesystem>
#include <string>
#include <vector>

namespace demo {

using Key = ul::TCryptBuffer<unsigned char>;

struct ManifestFile {
    std::string name; // relative, so that the files can be restored to any folder
    std::string digest;
};

struct Manifest {
    ul::String cipher;
    unsigned long long salt = 0;
    int iterations = 0;
    std::vector<ManifestFile> files;

    /// Writes the manifest with its HMAC, and its signature beside it.
    void write(const std::filesystem::path& path, const Key& macKey) const;
};

/// Reads a manifest.
/// \throws ul::CError if its signature does not match.
Manifest readManifest(const std::filesystem::path& path);

/// Whether the HMAC of a manifest is the one under `macKey`.
bool hasRightHMAC(const std::filesystem::path& path, const Key& macKey);

} // namespace demo
