// SPDX-License-Identifier: Apache-2.0
#include "errors/raise.h"
#include "files/file_handle.h"
#include "files/windows/native_path.h"

#include <utility>

#include <windows.h>

namespace ul {

namespace {

/// A new file in the folder of the one that it is to replace. The destructor removes it unless it has done so.
class Replacement {
public:
    explicit Replacement(const CWindowsPath& target) : m_target(toNativePath(target)), m_file(target) {}
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        m_file.close();
        if (!m_temporary.empty())
            ::DeleteFileW(m_temporary.c_str());
    }

    void write(const std::string& bytes) {
        checkReplaceable();
        create();
        m_file.write(bytes.data(), bytes.size());
        m_file.sync();
        m_file.close();
        if (!::MoveFileExW(m_temporary.c_str(), m_target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            raise(::GetLastError());
        m_temporary.clear();
    }

private:
    [[noreturn]] void raise(DWORD code) const {
        raiseFileError("write file", m_file.getPath(), static_cast<int>(code));
    }

    void checkReplaceable() const {
        // A link is replaced whatever its attributes are. For a missing file, every bit is set. Any other obstacle,
        // such as a folder, makes the replacement itself fail.
        const DWORD attributes = ::GetFileAttributesW(m_target.c_str());
        if ((attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_REPARSE_POINT)) == FILE_ATTRIBUTE_READONLY)
            raise(ERROR_ACCESS_DENIED);
    }

    void create() {
        std::wstring name = m_target.substr(0, m_target.rfind(L'\\') + 1) + makeTemporaryName().toStdWString();
        // The folder determines the permissions. Nobody else may open the unfinished file.
        const HANDLE file =
            ::CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE)
            raise(::GetLastError());
        m_file.adopt(reinterpret_cast<std::intptr_t>(file));
        m_temporary = std::move(name);
    }

    std::wstring m_target;
    // Empty unless the new file is there.
    std::wstring m_temporary;
    FileHandle m_file;
};

} // namespace

void replaceFile(const CWindowsPath& target, const std::string& bytes) {
    Replacement(target).write(bytes);
}

} // namespace ul
