// SPDX-License-Identifier: Apache-2.0
#include "system.h"

#include "status.h"

#include <algorithm>
#include <array>
#include <atomic>

#include <windows.h>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

namespace tool {

namespace {

std::atomic<bool> isInterrupted{false};

BOOL WINAPI noteInterrupt(DWORD) {
    return !isInterrupted.exchange(true); // the second one is left to the system, which ends the process
}

/// The console's input without echo.
class HiddenConsole {
public:
    HiddenConsole() : m_input(open(L"CONIN$")), m_output(open(L"CONOUT$")) {
        const DWORD lineMode = ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT;
        m_isHidden = m_output != INVALID_HANDLE_VALUE && GetConsoleMode(m_input, &m_mode) &&
                     SetConsoleMode(m_input, (m_mode & ~static_cast<DWORD>(ENABLE_ECHO_INPUT)) | lineMode);
    }
    HiddenConsole(const HiddenConsole&) = delete;
    HiddenConsole& operator=(const HiddenConsole&) = delete;
    ~HiddenConsole() {
        if (m_isHidden)
            SetConsoleMode(m_input, m_mode);
        CloseHandle(m_input);
        CloseHandle(m_output);
    }
    bool isHidden() const { return m_isHidden; }
    void write(const ul::String& text) const {
        WriteConsoleW(m_output, text.c_str(), static_cast<DWORD>(text.getLength()), nullptr, nullptr);
    }
    /// The characters of a line with its end.
    DWORD read(wchar_t* characters, DWORD count) const {
        DWORD size = 0;
        return ReadConsoleW(m_input, characters, count, &size, nullptr) ? size : 0;
    }

private:
    static HANDLE open(const wchar_t* name) {
        return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                           OPEN_EXISTING, 0, nullptr);
    }

    HANDLE m_input;
    HANDLE m_output;
    DWORD m_mode = 0;
    bool m_isHidden = false;
};

} // namespace

void prepareProcess() {
    for (int descriptor = 0; descriptor <= 2; ++descriptor)
        _setmode(descriptor, _O_BINARY);
    SetConsoleOutputCP(CP_UTF8);
    SetConsoleCtrlHandler(noteInterrupt, TRUE);
}

void throwIfInterrupted() {
    if (isInterrupted)
        throw Interrupted();
}

int endByInterrupt() {
    return static_cast<int>(STATUS_CONTROL_C_EXIT);
}

std::filesystem::path getPath(const std::string& name) {
    return ul::native(ul::path(std::string_view(name)));
}

int openToRead(const std::filesystem::path& path) {
    return _wopen(path.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT | _O_SEQUENTIAL);
}

int readSome(int descriptor, void* data, int size) {
    return _read(descriptor, data, static_cast<unsigned>(size));
}

int writeSome(int descriptor, const void* data, int size) {
    return _write(descriptor, data, static_cast<unsigned>(size));
}

int closeFile(int descriptor) {
    return _close(descriptor);
}

bool isTerminal(int descriptor) {
    return _isatty(descriptor) != 0;
}

int createFile(const std::filesystem::path& path, unsigned) {
    return _wopen(path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
}

std::int64_t getRegularRest(int descriptor) {
    struct _stat64 status = {};
    const bool isRegular = _fstat64(descriptor, &status) == 0 && (status.st_mode & _S_IFMT) == _S_IFREG;
    return isRegular ? std::max<std::int64_t>(status.st_size - _telli64(descriptor), 0) : -1;
}

bool seek(int descriptor, std::int64_t position) {
    return _lseeki64(descriptor, position, SEEK_SET) == position;
}

int flush(int descriptor) {
    return _commit(descriptor);
}

std::error_code renameToFree(const std::filesystem::path& from, const std::filesystem::path& to) {
    const int result = _wrename(from.c_str(), to.c_str());
    return result == 0 ? std::error_code() : std::error_code(errno, std::generic_category());
}

ul::TCryptBuffer<char> readHiddenLine(const std::string& prompt) {
    const HiddenConsole console;
    if (!console.isHidden())
        throw Problem(Misuse, "there is no terminal to ask for a secret: name its file or descriptor");
    console.write(ul::text(prompt));
    std::array<wchar_t, 1024> characters;
    // Made before there is a secret. No character of 16 bits takes more than three bytes.
    ul::TCryptBuffer<char> line(3 * static_cast<int>(characters.size()), -1);
    DWORD size = console.read(characters.data(), characters.size());
    while (size > 0 && (characters[size - 1] == L'\n' || characters[size - 1] == L'\r'))
        --size;
    line.setUsed(::WideCharToMultiByte(CP_UTF8, 0, characters.data(), static_cast<int>(size), line.getData(),
                                       line.getUsed(), nullptr, nullptr));
    ul::wipe(characters.data(), sizeof characters);
    console.write("\n");
    throwIfInterrupted();
    return line;
}

} // namespace tool
