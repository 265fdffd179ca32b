// SPDX-License-Identifier: Apache-2.0
// Folders of a test's own.
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

/// An empty folder in a temporary one, in which the process is while it lives.
class WorkFolder {
public:
    explicit WorkFolder(const std::string& name = "work") : m_previous(std::filesystem::current_path()) {
        const std::filesystem::path folder = std::filesystem::canonical(m_parent.getNative()) / name;
        std::filesystem::create_directory(folder);
        std::filesystem::current_path(folder);
        m_text = TempFolder::toPath(folder).getString().toUTF8();
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;
    ~WorkFolder() { std::filesystem::current_path(m_previous); }

    /// The folder's path as the library writes it.
    const std::string& getText() const { return m_text; }

private:
    TempFolder m_parent;
    std::filesystem::path m_previous;
    std::string m_text;
};

} // namespace sarn_test
