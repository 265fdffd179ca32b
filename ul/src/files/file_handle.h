// SPDX-License-Identifier: Apache-2.0
// The file operations that differ between operating systems. All functions raise CFileError with the path that the
// caller gave.
#pragma once

#include "ul/path.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ul {

/// The reason for refusing a device, a pipe or a socket.
constexpr char notRegular[] = "it is not a regular file";

/// Owns an open file.
class FileHandle {
public:
    /// Opens an existing regular file and nothing else. Never waits.
    static std::unique_ptr<FileHandle> openForReading(const CWindowsPath& path);

    /// Starts with no open file. Errors name `path`.
    explicit FileHandle(const CWindowsPath& path) : m_path(path.getString()) {}
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle() { close(); }

    /// Takes ownership of a file that the system opened.
    void adopt(std::intptr_t handle) noexcept { m_handle = handle; }
    /// The system's handle.
    std::intptr_t get() const noexcept { return m_handle; }

    /// Reads up to `size` bytes. Returns 0 at the end only.
    int read(void* data, int size);
    void write(const void* data, std::size_t size);
    /// Size in bytes; 0 for a file that the system generates when it is read.
    std::int64_t getSize() const;
    /// Waits until the written bytes are on the disk.
    void sync();
    void close() noexcept;

    const String& getPath() const noexcept { return m_path; }

private:
    // The system's value for a file that is not open.
    static constexpr std::intptr_t notOpen = -1;

    // A file descriptor, or a HANDLE on Windows. All memory is allocated before the file is opened, so that the handle
    // cannot leak.
    std::intptr_t m_handle = notOpen;
    String m_path;
};

/// Replaces `target` by a file with the content `bytes`, in one step that survives a power failure. After an error the
/// old file is unchanged.
void replaceFile(const CWindowsPath& target, const std::string& bytes);

/// A name for a temporary file that will replace another: "~", up to 16 hexadecimal digits, ".tmp". It is
/// unpredictable, and short, so that a file can be replaced even if its own name is as long as the system allows.
String makeTemporaryName();

} // namespace ul
