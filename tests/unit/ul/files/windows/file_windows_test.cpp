// SPDX-License-Identifier: Apache-2.0
// Behaviour on Windows only.
#include "support/temp_folder.h"

#include "ul/error.h"
#include "ul/file.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace sarn_test {

TEST(WriteUTF8TextFile, FileThatSomebodyReads_IsNotReplacedOnWindows) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "old");
    {
        const ul::CWindowsFileInStream reader(path);
        EXPECT_THROW(ul::writeUTF8TextFile(path, "new"), ul::CFileError);
    }
    EXPECT_EQ(folder.read("f"), "old");
    EXPECT_EQ(folder.list(), std::vector<std::string>{"f"}) << "nothing is left beside it";
    ul::writeUTF8TextFile(path, "new");
    EXPECT_EQ(folder.read("f"), "new");
}

TEST(WriteUTF8TextFile, ReadOnlyFile_IsRefused) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "old");
    const std::wstring native = folder.getNative("f").native();
    ASSERT_TRUE(::SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_THROW(ul::writeUTF8TextFile(path, "new"), ul::CFileError);
    EXPECT_EQ(folder.read("f"), "old");
    EXPECT_EQ(folder.list(), std::vector<std::string>{"f"});
    ::SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(WriteUTF8TextFile, FileThatCannotBeMade_IsNamedInTheError) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.getPath("none\\f");
    try {
        ul::writeUTF8TextFile(path, "new");
        ADD_FAILURE() << "no error was raised";
    } catch (const ul::CFileError& error) {
        ul::String value;
        EXPECT_TRUE(error.getProps().tryGet("path", value));
        EXPECT_EQ(value.toUTF8(), path.getString().toUTF8());
    }
}

TEST(CWindowsFileInStream, NamedPipe_IsRefused) {
    const HANDLE pipe =
        ::CreateNamedPipeW(L"\\\\.\\pipe\\sarn-test", PIPE_ACCESS_OUTBOUND, PIPE_TYPE_BYTE, 1, 4096, 4096, 0, nullptr);
    ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
    EXPECT_THROW(ul::CWindowsFileInStream stream{ul::CWindowsPath("\\\\?\\pipe\\sarn-test")}, ul::CFileError);
    ::CloseHandle(pipe);
}

} // namespace sarn_test
