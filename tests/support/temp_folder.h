// SPDX-License-Identifier: Apache-2.0
// A folder of a test's own.
#pragma once

#include "ul/path.h"

#include <filesystem>
#include <string>
#include <vector>

namespace sarn_test {

/// An empty folder that is removed with all that is in it.
class TempFolder {
public:
    TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder();

    const std::filesystem::path& getNative() const { return m_folder; }
    std::filesystem::path getNative(const std::string& name) const { return m_folder / std::filesystem::u8path(name); }
    /// The path of the file called `name`, in UTF-8.
    ul::CWindowsPath getPath(const std::string& name) const { return toPath(getNative(name)); }
    /// Names of what is in the folder, sorted.
    std::vector<std::string> list() const;

    /// Writes a file by other means than the library's.
    ul::CWindowsPath write(const std::string& name, const std::string& content) const;
    /// Reads a file by other means than the library's.
    std::string read(const std::string& name) const;

    static ul::CWindowsPath toPath(const std::filesystem::path& native);

private:
    std::filesystem::path m_folder;
};

} // namespace sarn_test
