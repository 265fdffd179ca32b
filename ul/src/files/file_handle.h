// SPDX-License-Identifier: Apache-2.0
// What differs between operating systems about files. All functions raise CFileError, which names the file that the
// caller asked for.
#pragma once

#include "ul/path.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ul {

/// Why a device, a pipe or a socket is refused.
constexpr char notRegular[] = "it is not a regular file";

/// Owns an open file.
class FileHandle {
public:
    /// Opens an existing regular file, and nothing else, without waiting for anybody.
    static std::unique_ptr<FileHandle> openForReading(const CWindowsPath& path);

    /// A file that is not open yet. Errors name `path`.
    explicit FileHandle(const CWindowsPath& path) : m_path(path.getString()) {}
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle() { close(); }

    /// Takes what the system opened over.
    void adopt(std::intptr_t handle) noexcept { m_handle = handle; }
    /// What the system opened.
    std::intptr_t get() const noexcept { return m_handle; }

    /// Reads up to `size` bytes; 0 only at the end.
    int read(void* data, int size);
    void write(const void* data, std::size_t size);
    /// Size in bytes; 0 for a file whose content the system makes up when it is read.
    std::int64_t getSize() const;
    /// Waits until what was written is on the disk.
    void sync();
    void close() noexcept;

    const String& getPath() const noexcept { return m_path; }

private:
    // What the system calls a file that is not open.
    static constexpr std::intptr_t notOpen = -1;

    // A file descriptor, or a HANDLE on Windows. All memory is there before it is opened, so that it is never lost.
    std::intptr_t m_handle = notOpen;
    String m_path;
};

/// Puts a file that holds `bytes` in the place of `target`, in one step that survives a power failure. On failure what
/// was there stays as it was.
void replaceFile(const CWindowsPath& target, const std::string& bytes);

/// A name for a file that is going to replace another: "~", up to 16 hexadecimal digits, ".tmp". Nobody can guess it,
/// and it is short, so that any file whose name the system takes can be replaced.
String makeTemporaryName();

} // namespace ul
