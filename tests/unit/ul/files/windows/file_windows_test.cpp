// SPDX-License-Identifier: Apache-2.0
// Behaviour on Windows only.
#include "../file_fixture.h"
#include "support/replaced_import.h"

namespace sarn_test {

namespace {

std::string steps;
bool isDiskFull;

/// Records the calls by which a file is replaced. Writing fails while the disk is full.
struct FileSteps : FileFixture {
    FileSteps() {
        steps.clear();
        isDiskFull = false;
    }

    const ReplacedImport m_create{
        "CreateFileW", +[](const wchar_t* name, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES* security,
                           DWORD disposition, DWORD attributes, HANDLE like) {
            steps += "create, sharing " + std::to_string(sharing) + "; ";
            return ::CreateFileW(name, access, sharing, security, disposition, attributes, like);
        }};
    const ReplacedImport m_write{
        "WriteFile", +[](HANDLE file, const void* data, DWORD size, DWORD* written, OVERLAPPED* overlapped) -> BOOL {
            steps += "write; ";
            if (!isDiskFull)
                return ::WriteFile(file, data, size, written, overlapped);
            ::SetLastError(ERROR_DISK_FULL);
            return FALSE;
        }};
    const ReplacedImport m_flush{"FlushFileBuffers", +[](HANDLE file) {
                                     steps += "flush; ";
                                     return ::FlushFileBuffers(file);
                                 }};
    const ReplacedImport m_close{"CloseHandle", +[](HANDLE file) {
                                     steps += "close; ";
                                     return ::CloseHandle(file);
                                 }};
    const ReplacedImport m_move{"MoveFileExW", +[](const wchar_t* from, const wchar_t* to, DWORD flags) {
                                    steps += "move, flags " + std::to_string(flags) + "; ";
                                    return ::MoveFileExW(from, to, flags);
                                }};
    const ReplacedImport m_delete{"DeleteFileW", +[](const wchar_t* name) {
                                      steps += "delete; ";
                                      return ::DeleteFileW(name);
                                  }};
};

} // namespace

TEST_F(FileSteps, NewContent_IsFlushedBeforeItGetsTheName) {
    write("old");
    ul::writeUTF8TextFile(path, "new");
    static_assert((MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 9);
    EXPECT_EQ(steps, "create, sharing 0; write; flush; close; move, flags 9; ");
    expectOnly("new");
}

TEST_F(FileSteps, FullDisk_IsReportedAndLeavesTheOldFileAlone) {
    write("old");
    isDiskFull = true;
    expectWriteError(path, ERROR_DISK_FULL);
    EXPECT_EQ(steps, "create, sharing 0; write; close; delete; ");
    expectOnly("old");
}

TEST_F(FileSteps, ReadOnlyFile_IsRefusedBeforeAnythingIsCreated) {
    write("old");
    const std::wstring native = folder.getNative("f").native();
    ASSERT_TRUE(::SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_READONLY));
    expectWriteError(path);
    EXPECT_EQ(steps, "");
    expectOnly("old");
    ::SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_NORMAL);
}

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

TEST(GetCurrentWorkDirectoryAsString, ThatWindowsCannotName_IsAFileError) {
    const ReplacedImport fail(
        "GetCurrentDirectoryW", +[](DWORD, wchar_t*) -> DWORD {
            ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return 0;
        });
    const ul::P<ul::CError> error = catchError<ul::CFileError>([] { ul::getCurrentWorkDirectoryAsString(); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->getCode(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(error->what(), "Cannot name the working directory '.': " + getProp(*error, "reason") + ".");
}

TEST_F(CWindowsFileInStream, CallThatFails_IsAFileErrorWithItsNumber) {
    write("content");
    ul::CWindowsFileInStream stream(path);
    const ReplacedImport read(
        "ReadFile", +[](HANDLE, void*, DWORD, DWORD*, OVERLAPPED*) -> BOOL {
            ::SetLastError(ERROR_CRC);
            return FALSE;
        });
    char byte = 0;
    expectFileError("read file", path, ERROR_CRC, "", [&] { stream.readLax(&byte, 1); });
    const ReplacedImport getSize(
        "GetFileSizeEx", +[](HANDLE, LARGE_INTEGER*) -> BOOL {
            ::SetLastError(ERROR_CRC);
            return FALSE;
        });
    expectFileError("get size of file", path, ERROR_CRC, "", [&] { stream.getLength(); });
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
