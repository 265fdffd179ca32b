// SPDX-License-Identifier: Apache-2.0
#include "file_handle.h"

#include "native_path.h"
#include "raise.h"

#include <algorithm>
#include <utility>

#include <windows.h>

namespace ul {

namespace {

HANDLE toHandle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

[[noreturn]] void raiseLastError(const char* operation, const String& path) {
    raiseFileError(operation, path, static_cast<int>(::GetLastError()));
}

std::intptr_t openHandle(const char* operation, const CWindowsPath& path, const std::wstring& native, DWORD access,
                         DWORD disposition) {
    // Others may go on using the file in every way, as they may on other systems.
    constexpr DWORD sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE handle =
        ::CreateFileW(native.c_str(), access, sharing, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        raiseLastError(operation, path.getString());
    return reinterpret_cast<std::intptr_t>(handle);
}

} // namespace

std::unique_ptr<FileHandle> FileHandle::openForReading(const CWindowsPath& path) {
    auto file = std::make_unique<FileHandle>(path);
    file->adopt(openHandle("open file", path, toNativePath(path), GENERIC_READ, OPEN_EXISTING));
    return file;
}

std::unique_ptr<FileHandle> FileHandle::createLike(const CWindowsPath& path, const CWindowsPath&) {
    auto file = std::make_unique<FileHandle>(path);
    file->m_createdAs = toNativePath(path);
    // Permissions come from the folder.
    file->adopt(openHandle("write file", path, file->m_createdAs, GENERIC_WRITE, CREATE_NEW));
    return file;
}

int FileHandle::read(void* data, int size) {
    DWORD count = 0;
    if (!::ReadFile(toHandle(m_handle), data, static_cast<DWORD>(size), &count, nullptr)) {
        // The writer of a pipe has gone: its end.
        if (::GetLastError() == ERROR_BROKEN_PIPE)
            return 0;
        raiseLastError("read file", m_path);
    }
    return static_cast<int>(count);
}

void FileHandle::write(const void* data, std::size_t size) {
    const auto* next = static_cast<const char*>(data);
    while (size > 0) {
        const auto chunk = static_cast<DWORD>(std::min<std::size_t>(size, 1U << 30));
        DWORD count = 0;
        if (!::WriteFile(toHandle(m_handle), next, chunk, &count, nullptr))
            raiseLastError("write file", m_path);
        next += count;
        size -= count;
    }
}

std::int64_t FileHandle::getSize() const {
    if (::GetFileType(toHandle(m_handle)) != FILE_TYPE_DISK)
        return 0;
    LARGE_INTEGER size;
    if (!::GetFileSizeEx(toHandle(m_handle), &size))
        raiseLastError("get size of file", m_path);
    return size.QuadPart;
}

void FileHandle::sync() {
    if (!::FlushFileBuffers(toHandle(m_handle)))
        raiseLastError("write file", m_path);
}

void replaceFile(const CWindowsPath& source, const CWindowsPath& target) {
    if (!::MoveFileExW(toNativePath(source).c_str(), toNativePath(target).c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        raiseLastError("write file", target.getString());
}

void FileHandle::close() noexcept {
    if (const std::intptr_t handle = std::exchange(m_handle, notOpen); handle != notOpen)
        ::CloseHandle(toHandle(handle));
}

void FileHandle::discard() noexcept {
    close();
    ::DeleteFileW(m_createdAs.c_str());
}

} // namespace ul
