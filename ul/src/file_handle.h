// SPDX-License-Identifier: Apache-2.0
// What differs between operating systems about files. All functions raise CFileError.
#pragma once

#include "ul/path.h"

#include <cstdint>
#include <filesystem>
#include <memory>

namespace ul {

/// Owns an open file.
class FileHandle {
public:
    /// Opens an existing file that is no folder.
    static std::unique_ptr<FileHandle> openForReading(const CWindowsPath& path);
    /// Creates a file that must not exist yet, with the permissions of `model` if there is such a file.
    static std::unique_ptr<FileHandle> createLike(const CWindowsPath& path, const CWindowsPath& model);

    /// A file that is not open yet.
    explicit FileHandle(const CWindowsPath& path) : m_path(path.getString()) {}
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle() { close(); }

    /// Takes what the system opened over.
    void adopt(std::intptr_t handle) noexcept { m_handle = handle; }

    /// Reads up to `size` bytes; 0 only at the end.
    int read(void* data, int size);
    void write(const void* data, std::size_t size);
    /// Size in bytes; 0 for what has none.
    std::int64_t getSize() const;
    /// Waits until what was written is on the disk.
    void sync();
    void close() noexcept;
    /// Closes a file that createLike() made and removes it again if that can be done. Needs no memory.
    void discard() noexcept;

    const String& getPath() const noexcept { return m_path; }

private:
    // What the system calls a file that is not open.
    static constexpr std::intptr_t notOpen = -1;

    // A file descriptor, or a HANDLE on Windows. All memory is there before it is opened, so that it is never lost.
    std::intptr_t m_handle = notOpen;
    String m_path;
    std::filesystem::path::string_type m_createdAs;
};

/// Gives `source` the name of `target`, in place of a file that has it, in one step that survives a power failure.
void replaceFile(const CWindowsPath& source, const CWindowsPath& target);

} // namespace ul
