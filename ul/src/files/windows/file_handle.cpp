// SPDX-License-Identifier: Apache-2.0
#include "files/file_handle.h"

#include "errors/raise.h"
#include "files/windows/native_path.h"

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

} // namespace

std::unique_ptr<FileHandle> FileHandle::openForReading(const CWindowsPath& path) {
    constexpr char operation[] = "open file";
    const std::wstring native = toNativePath(path);
    auto file = std::make_unique<FileHandle>(path);
    // Other programs may keep using the file in every way, as on other systems. The server of a pipe with that name can
    // identify the caller but not impersonate it.
    constexpr DWORD sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    constexpr DWORD flags = FILE_ATTRIBUTE_NORMAL | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
    const HANDLE handle = ::CreateFileW(native.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, flags, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        raiseLastError(operation, path.getString());
    file->adopt(reinterpret_cast<std::intptr_t>(handle));
    if (::GetFileType(handle) != FILE_TYPE_DISK)
        raiseFileError(operation, path.getString(), notRegular);
    return file;
}

int FileHandle::read(void* data, int size) {
    DWORD count = 0;
    if (!::ReadFile(toHandle(m_handle), data, static_cast<DWORD>(size), &count, nullptr))
        raiseLastError("read file", m_path);
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
    LARGE_INTEGER size;
    if (!::GetFileSizeEx(toHandle(m_handle), &size))
        raiseLastError("get size of file", m_path);
    return size.QuadPart;
}

void FileHandle::sync() {
    if (!::FlushFileBuffers(toHandle(m_handle)))
        raiseLastError("write file", m_path);
}

void FileHandle::close() noexcept {
    if (const std::intptr_t handle = std::exchange(m_handle, notOpen); handle != notOpen)
        ::CloseHandle(toHandle(handle));
}

} // namespace ul
