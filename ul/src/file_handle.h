// SPDX-License-Identifier: Apache-2.0
// What differs between operating systems about files. All functions raise CFileError.
#pragma once

#include "ul/path.h"

#include <cstdint>
#include <memory>

namespace ul {

/// Owns an open file.
class FileHandle {
public:
    /// Opens an existing file that is no folder.
    static std::unique_ptr<FileHandle> openForReading(const CWindowsPath& path);
    /// Creates a file that must not exist yet, with the permissions of `model` if there is such a file.
    static std::unique_ptr<FileHandle> createLike(const CWindowsPath& path, const CWindowsPath& model);

    FileHandle(std::intptr_t handle, const String& path) noexcept : m_handle(handle), m_path(path) {}
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle();

    /// Reads up to `size` bytes; 0 only at the end.
    int read(void* data, int size);
    void write(const void* data, std::size_t size);
    /// Size in bytes; 0 for what has none.
    std::int64_t getSize() const;
    /// Waits until what was written is on the disk.
    void sync();

    const String& getPath() const noexcept { return m_path; }

private:
    // A file descriptor, or a HANDLE on Windows.
    std::intptr_t m_handle;
    String m_path;
};

/// Gives `source` the name of `target`, in place of a file that has it, in one step that survives a power failure.
void replaceFile(const CWindowsPath& source, const CWindowsPath& target);

/// Removes a file, if that is possible.
void tryRemoveFile(const CWindowsPath& path) noexcept;

} // namespace ul
