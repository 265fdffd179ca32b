// SPDX-License-Identifier: Apache-2.0
// Files that appear whole or not at all.
#pragma once

#include <ul/host.h>

#include <filesystem>
#include <string>

namespace tool {

/// A new file, or standard output under the name "-". The bytes go to a temporary file in the same folder, which gets
/// its name in commit() and is removed by the destructor otherwise.
class Output {
public:
    enum class Readers { Mask, OwnerOnly };

    /// \param mayReplace whether a regular file or a link of this name is replaced
    /// \param readers    the permissions of the new file: as the process's mask says, and no more than those of a file
    ///                   that it replaces; or 0600
    /// \throws Problem if the name is taken; ul::CFileError.
    Output(const std::string& name, bool mayReplace, Readers readers = Readers::Mask);
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output();

    void write(ul::CBytes bytes);
    /// Writes everything to the disk and gives the file its name.
    void commit();

private:
    unsigned checkName(Readers readers) const;

    std::string m_name;
    bool m_isStandard;
    bool m_mayReplace;
    std::filesystem::path m_path;
    std::filesystem::path m_temporary;
    int m_descriptor;
};

/// Writes all bytes to standard output or standard error.
/// \throws ul::CFileError.
void writeTo(int descriptor, ul::CBytes bytes, const std::string& name);

} // namespace tool
