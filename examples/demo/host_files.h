// SPDX-License-Identifier: Apache-2.0
// Files and keys of the demo.
#pragma once

#include <sarn/host.h>

#include <filesystem>
#include <string>
#include <vector>

namespace demo {

/// `path` with a suffix after its name.
std::filesystem::path withSuffix(std::filesystem::path path, const char* suffix);

/// The text of a path in UTF-8, with "/" between its names on every system.
std::string toUTF8(const std::filesystem::path& path);

/// The key that verifies configurations and manifests.
ul::String readPublicKey();

/// Writes a text file and its signature beside it. A real host does not have the private key: it
/// stays where backups are configured.
void writeSigned(const std::filesystem::path& path, const ul::String& text);

/// The files to back up. In a folder, build results and hidden folders are skipped.
std::vector<std::filesystem::path> listFiles(const std::filesystem::path& path);

/// A folder for the files that the demo writes. If none is wanted, it is a temporary one, which the destructor removes.
class WorkFolder {
public:
    explicit WorkFolder(const std::filesystem::path& wanted);
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;
    ~WorkFolder();

    const std::filesystem::path& getPath() const { return m_path; }
    std::filesystem::path getConfiguration() const { return m_path / "backup.ini"; }
    std::filesystem::path getManifest() const { return m_path / "manifest.ini"; }
    std::filesystem::path getCopy(std::size_t index) const { return m_path / (std::to_string(index) + ".encrypted"); }
    std::filesystem::path getRestored(std::size_t index) const {
        return m_path / (std::to_string(index) + ".restored");
    }

private:
    bool m_isOwn;
    std::filesystem::path m_path;
};

} // namespace demo
