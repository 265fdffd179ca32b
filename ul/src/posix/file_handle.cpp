// SPDX-License-Identifier: Apache-2.0
#include "file_handle.h"

#include "native_path.h"
#include "raise.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ul {

namespace {

/// Repeats a system call that a signal interrupted.
template <class Call>
auto retryInterrupted(Call call) {
    for (;;) {
        const auto result = call();
        if (result >= 0 || errno != EINTR)
            return result;
    }
}

int toDescriptor(std::intptr_t handle) {
    return static_cast<int>(handle);
}

int openDescriptor(const char* operation, const CWindowsPath& path, const std::string& native, int flags, mode_t mode) {
    const int descriptor = retryInterrupted([&] { return ::open(native.c_str(), flags | O_CLOEXEC, mode); });
    if (descriptor < 0)
        raiseFileError(operation, path.getString(), errno);
    return descriptor;
}

/// The file's status; false if there is no such file.
bool tryGetStatus(const CWindowsPath& path, struct stat& status) {
    if (::stat(toNativePath("write file", path).c_str(), &status) == 0)
        return true;
    if (errno != ENOENT)
        raiseFileError("write file", path.getString(), errno);
    return false;
}

} // namespace

std::unique_ptr<FileHandle> FileHandle::openForReading(const CWindowsPath& path) {
    constexpr char operation[] = "open file";
    auto file = std::make_unique<FileHandle>(path);
    file->adopt(openDescriptor(operation, path, toNativePath(operation, path), O_RDONLY, 0));
    struct stat status;
    // A folder can be opened and would fail only when it is read.
    const bool isKnown = ::fstat(toDescriptor(file->m_handle), &status) == 0;
    if (!isKnown || S_ISDIR(status.st_mode))
        raiseFileError(operation, path.getString(), isKnown ? EISDIR : errno);
    return file;
}

std::unique_ptr<FileHandle> FileHandle::createLike(const CWindowsPath& path, const CWindowsPath& model) {
    constexpr char operation[] = "write file";
    struct stat status;
    const bool hasModel = tryGetStatus(model, status);
    const mode_t mode = hasModel ? status.st_mode & 07777 : 0666;
    auto file = std::make_unique<FileHandle>(path);
    file->m_createdAs = toNativePath(operation, path);
    file->adopt(openDescriptor(operation, path, file->m_createdAs, O_WRONLY | O_CREAT | O_EXCL,
                               mode & static_cast<mode_t>(0777)));
    // The creation mask may have taken bits away that the model has.
    if (hasModel && ::fchmod(toDescriptor(file->m_handle), mode) != 0) {
        const int code = errno;
        file->discard();
        raiseFileError(operation, path.getString(), code);
    }
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

void FileHandle::discard() noexcept {
    close();
    ::unlink(m_createdAs.c_str());
}

void replaceFile(const CWindowsPath& source, const CWindowsPath& target) {
    const std::string nativeTarget = toNativePath("write file", target);
    if (std::rename(toNativePath("write file", source).c_str(), nativeTarget.c_str()) != 0)
        raiseFileError("write file", target.getString(), errno);
    // The new name is on the disk only when its folder is.
    const CWindowsPath folderPath(target.getString() + L"\\..");
    constexpr char operation[] = "flush folder";
    FileHandle folder(folderPath);
    folder.adopt(openDescriptor(operation, folderPath, toNativePath(operation, folderPath), O_RDONLY | O_DIRECTORY, 0));
    folder.sync();
}

} // namespace ul
