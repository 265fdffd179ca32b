// SPDX-License-Identifier: Apache-2.0
// A working directory of a test's own.
#pragma once

#include "support/temp_folder.h"

namespace sarn_test {

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
