// SPDX-License-Identifier: Apache-2.0
// Where the demo keeps what, and the keys that it signs with.
#pragma once

#include <sarn/sarn.h>

#include <filesystem>
#include <string>
#include <vector>

namespace demo {

/// The library's path of a file.
ul::CWindowsPath toPath(const std::filesystem::path& path);

/// `path` with a suffix behind its name.
std::filesystem::path withSuffix(const std::filesystem::path& path, const char* suffix);

/// A key of the demo. A real host has only the public one; the private one stays where backups are set up.
ul::String readDemoKey(const char* name);

/// The files to back up: build results and hidden folders are left out of a folder.
std::vector<std::filesystem::path> listFiles(const std::filesystem::path& path);

/// A folder for what the demo writes; one that it made up itself goes with it.
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
