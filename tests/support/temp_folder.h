// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ul/path.h"

#include <filesystem>
#include <string>
#include <vector>

namespace sarn_test {

/// A new folder, removed at the end with its content.
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
    /// The sorted names of the entries of the folder.
    std::vector<std::string> list() const;

    /// Writes a file without the library.
    ul::CWindowsPath write(const std::string& name, const std::string& content) const;
    /// Reads a file without the library.
    std::string read(const std::string& name) const;
    /// Removes the files.
    void clear() const;

    static ul::CWindowsPath toPath(const std::filesystem::path& native);

private:
    std::filesystem::path m_folder;
};

/// While it lives, a new folder is the working directory.
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

    /// The folder's path in the form of the library.
    const std::string& getText() const { return m_text; }

private:
    TempFolder m_parent;
    std::filesystem::path m_previous;
    std::string m_text;
};

} // namespace sarn_test
