// SPDX-License-Identifier: Apache-2.0
// Behaviour on Windows only.
#include "../file_fixture.h"

#include <windows.h>

namespace sarn_test {

TEST_F(WriteUTF8TextFile, FileThatIsBeingRead_IsNotReplacedOnWindows) {
    write("old");
    {
        const ul::CWindowsFileInStream reader(path);
        expectWriteError(path);
    }
    expectOnly("old");
    ul::writeUTF8TextFile(path, "new");
    expectOnly("new");
}

TEST_F(WriteUTF8TextFile, ReadOnlyFile_IsRefused) {
    write("old");
    const std::wstring native = folder.getNative("f").native();
    ASSERT_TRUE(::SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_READONLY));
    expectWriteError(path);
    expectOnly("old");
    ::SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(WriteUTF8TextFile, FileOnAnotherVolumeThanTheFolderAbove_IsReplaced) {
    // Only Wine has such a folder. A new file that is made elsewhere cannot take the name there.
    const std::filesystem::path mounted = L"Z:\\dev\\shm";
    const std::filesystem::path file =
        (std::filesystem::exists(mounted) ? mounted : folder.getNative()) / folder.getNative().filename();
    for (const char* const content : {"old", "new"}) {
        ul::writeUTF8TextFile(TempFolder::toPath(file), content);
        EXPECT_EQ(ul::readUTF8TextFile(TempFolder::toPath(file)).toUTF8(), content);
    }
    std::filesystem::remove(file);
}

TEST_F(WriteUTF8TextFile, FileThatCannotBeCreated_IsNamedInTheError) {
    expectWriteError(folder.getPath("none\\f"));
}

TEST_F(CWindowsFileInStream, NamedPipe_IsRefused) {
    const HANDLE pipe =
        ::CreateNamedPipeW(L"\\\\.\\pipe\\sarn-test", PIPE_ACCESS_OUTBOUND, PIPE_TYPE_BYTE, 1, 4096, 4096, 0, nullptr);
    ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
    expectOpenError(ul::CWindowsPath("\\\\?\\pipe\\sarn-test"));
    ::CloseHandle(pipe);
}

TEST_F(CWindowsFileInStream, OnAShareThatDoesNotExist_IsTheErrorOfItsVerbatimForm) {
    const auto getErrorCode = [](const wchar_t* name) {
        ::CreateFileW(name, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        return static_cast<int>(::GetLastError());
    };
    const int expected = getErrorCode(LR"(\\?\UNC\no-such-server\share\file)");
    EXPECT_NE(expected, getErrorCode(LR"(\\?\\\no-such-server\share\file)")) << "this test shows nothing";
    expectOpenError(ul::CWindowsPath(LR"(\\no-such-server\share\file)"), expected);
}

} // namespace sarn_test
