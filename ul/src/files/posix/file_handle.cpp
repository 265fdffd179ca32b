// SPDX-License-Identifier: Apache-2.0
#include "files/file_handle.h"

#include "errors/raise.h"
#include "files/posix/interrupted_call.h"
#include "files/posix/native_path.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ul {

namespace {

int toDescriptor(std::intptr_t handle) {
    return static_cast<int>(handle);
}

} // namespace

std::unique_ptr<FileHandle> FileHandle::openForReading(const CWindowsPath& path) {
    constexpr char operation[] = "open file";
    const std::string native = toNativePath(operation, path);
    auto file = std::make_unique<FileHandle>(path);
    // O_NONBLOCK, because opening a FIFO would otherwise wait for a writer.
    constexpr int flags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    const int descriptor = retryInterrupted([&] { return ::open(native.c_str(), flags); });
    // Sockets cannot be opened; the system reports ENXIO for them.
    if (descriptor < 0 && errno == ENXIO)
        raiseFileError(operation, path.getString(), notRegular);
    if (descriptor < 0)
        raiseFileError(operation, path.getString(), errno);
    file->adopt(descriptor);
    struct stat status;
    if (::fstat(descriptor, &status) != 0)
        raiseFileError(operation, path.getString(), errno);
    if (S_ISDIR(status.st_mode))
        raiseFileError(operation, path.getString(), EISDIR);
    if (!S_ISREG(status.st_mode))
        raiseFileError(operation, path.getString(), notRegular);
    if (::fcntl(descriptor, F_SETFL, 0) != 0)
        raiseFileError(operation, path.getString(), errno);
    return file;
}

int FileHandle::read(void* data, int size) {
    const ssize_t count =
        retryInterrupted([&] { return ::read(toDescriptor(m_handle), data, static_cast<std::size_t>(size)); });
    if (count < 0)
        raiseFileError("read file", m_path, errno);
    return static_cast<int>(count);
}

void FileHandle::write(const void* data, std::size_t size) {
    const auto* next = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t count = retryInterrupted([&] { return ::write(toDescriptor(m_handle), next, size); });
        if (count < 0)
            raiseFileError("write file", m_path, errno);
        next += count;
        size -= static_cast<std::size_t>(count);
    }
}

std::int64_t FileHandle::getSize() const {
    struct stat status;
    if (::fstat(toDescriptor(m_handle), &status) != 0)
        raiseFileError("get size of file", m_path, errno);
    return status.st_size;
}

void FileHandle::sync() {
    if (retryInterrupted([&] { return ::fsync(toDescriptor(m_handle)); }) != 0)
        raiseFileError("write file", m_path, errno);
}

void FileHandle::close() noexcept {
    if (const std::intptr_t handle = std::exchange(m_handle, notOpen); handle != notOpen)
        ::close(toDescriptor(handle));
}

} // namespace ul
