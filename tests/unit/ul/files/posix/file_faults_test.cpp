// SPDX-License-Identifier: Apache-2.0
// Files that fail, and files and working directories that exist only outside Windows.
#include "../file_fixture.h"

#include <cerrno>
#include <fstream>

#include <fcntl.h>
#include <unistd.h>

namespace sarn_test {

namespace fs = std::filesystem;

namespace {

/// The number of the next descriptor.
int getNextDescriptor() {
    const int descriptor = ::dup(STDERR_FILENO);
    ::close(descriptor);
    return descriptor;
}

} // namespace

TEST_F(WriteUTF8TextFile, InAFolderThatRefusesFiles_IsAFileError) {
    expectWriteError(ul::CWindowsPath("/proc/self/none"), ENOENT);
}

TEST_F(WriteUTF8TextFile, AtTheTopOfAFileSystem_IsWrittenWithinIt) {
    ASSERT_TRUE(fs::is_directory("/dev/shm")) << "this test needs a file system of its own to write to";
    const std::string name = "/dev/shm/sarn-test-" + std::to_string(::getpid());
    ul::writeUTF8TextFile(ul::CWindowsPath(name.c_str()), "text");
    EXPECT_EQ(fs::file_size(name), 4U);
    fs::remove(name);
}

TEST_F(WriteUTF8TextFile, WithoutStandardInput_UsesDescriptor0AndClosesIt) {
    const int standardInput = ::dup(STDIN_FILENO);
    ::close(STDIN_FILENO);
    errno = EACCES;
    ul::writeUTF8TextFile(path, "text");
    errno = ENXIO;
    EXPECT_TRUE(ul::readUTF8TextFile(path) == "text");
    EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), -1);
    ::dup2(standardInput, STDIN_FILENO);
    ::close(standardInput);
}

TEST_F(WriteUTF8TextFile, FileThatIsBeingRead_IsReplacedAndTheReaderKeepsTheOldOne) {
    write(std::string(100000, 'x'));
    ul::CWindowsFileInStream reader(path);
    ul::writeUTF8TextFile(path, "new");
    EXPECT_EQ(folder.read("f"), "new");
    std::string content(100000, '\0');
    reader.read(content.data(), 100000);
    EXPECT_EQ(content, std::string(100000, 'x'));
}

TEST_F(WriteUTF8TextFile, Path_IsShownByItsTextInTheError) {
    expectErrorOf<ul::CFileError>("Cannot open file 'Z:\\no\\such\\file': No such file or directory.",
                                  [] { ul::readUTF8TextFile(ul::CWindowsPath("/no/such/file")); });
}

TEST_F(CWindowsFileInStream, ReadThatFails_IsAFileError) {
    // The memory of the process cannot be read at address 0.
    const ul::CWindowsPath memory("/proc/self/mem");
    ul::CWindowsFileInStream stream(memory);
    char data[1];
    expectFileError("read file", memory, EIO, "", [&] { stream.readLax(data, 1); });
    expectFileError("read file", memory, EIO, "", [&] { stream.isEndOfStream(); });
}

TEST_F(CWindowsFileInStream, LengthThatTheSystemDoesNotReport_IsAFileError) {
    write("abc");
    const int descriptor = getNextDescriptor();
    const ul::CWindowsFileInStream stream(path);
    ASSERT_EQ(::close(descriptor), 0);
    expectFileError("get size of file", path, EBADF, "Bad file descriptor", [&] { stream.getLength(); });
}

TEST_F(CWindowsFileInStream, FileWithoutASize_IsReadToItsEnd) {
    ul::CWindowsFileInStream status(ul::CWindowsPath("/proc/self/status"));
    EXPECT_EQ(status.getLength(), 0);
    std::string content;
    char chunk[100];
    while (!status.isEndOfStream())
        content.append(chunk, static_cast<std::size_t>(status.readLax(chunk, 100)));
    EXPECT_EQ(content.find("Name:"), 0U);
    EXPECT_NE(content.find("Threads:"), std::string::npos);
    EXPECT_THROW(ul::readUTF8TextFile(ul::CWindowsPath("/proc/self/status"), 10), ul::CFileError);
}

TEST_F(CWindowsFileInStream, EndOfAFile_AfterAnInterruptedCallOfTheHost_IsTheEnd) {
    ul::CWindowsFileInStream stream(write(""));
    char data[1];
    errno = EINTR;
    EXPECT_EQ(stream.readLax(data, 1), 0);
}

TEST_F(CWindowsFileInStream, InAProcessWithoutStandardInput_IsOpened) {
    write("abc");
    const int standardInput = ::dup(STDIN_FILENO);
    ASSERT_GE(standardInput, 0);
    ::close(STDIN_FILENO);
    {
        // The stream gets descriptor 0.
        ul::CWindowsFileInStream stream(path);
        char data[3];
        EXPECT_EQ(stream.readLax(data, 3), 3);
        EXPECT_EQ(std::string(data, 3), "abc");
    }
    EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), -1) << "the stream has closed it";
    ::dup2(standardInput, STDIN_FILENO);
    ::close(standardInput);
}

TEST_F(CWindowsFileInStream, FileBeyond4GiB_HasItsLength) {
    write("abc");
    fs::resize_file(folder.getNative("f"), 5368709120U);
    const ul::CWindowsFileInStream stream(path);
    EXPECT_EQ(stream.getLength(), 5368709120);
    expectFileError("read file", path, -1, "it is too large to be held in memory", [&] { ul::readUTF8TextFile(path); });
}

TEST_F(CWindowsFileInStream, Descriptor_IsClosedByExecAndBlocks) {
    write("abc");
    const int descriptor = getNextDescriptor();
    const ul::CWindowsFileInStream stream(path);
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::fcntl(descriptor, F_GETFL) & (O_NONBLOCK | O_ACCMODE), O_RDONLY);
}

TEST_F(CWindowsFileInStream, ClosedAndFailedStreams_LeaveNoDescriptorOpen) {
    write("abc");
    const int before = getNextDescriptor();
    { ul::CWindowsFileInStream stream(path); }
    expectOpenError(TempFolder::toPath(folder.getNative()));
    ul::writeUTF8TextFile(path, "x");
    expectWriteError(TempFolder::toPath(folder.getNative()));
    EXPECT_EQ(getNextDescriptor(), before);
}

TEST_F(CWindowsFileInStream, NameThatIsNotUnicode_IsAFileError) {
    expectErrorOf<ul::CFileError>("Cannot open file 'Z:\\a?': its name is no valid Unicode text.",
                                  [] { ul::CWindowsFileInStream stream(ul::CWindowsPath(L"/a\xD800")); });
    expectErrorOf<ul::CFileError>("Cannot write file 'Z:\\a?': its name is no valid Unicode text.",
                                  [] { ul::writeUTF8TextFile(ul::CWindowsPath(L"/a\xD800"), "x"); });
}

TEST_F(CWindowsFileInStream, VerbatimPath_ReachesNamesThatEndInDotsAndSpaces) {
    std::ofstream(folder.getNative() / "notes.") << "dot";
    std::ofstream(folder.getNative() / "notes") << "plain";
    const ul::String text = TempFolder::toPath(folder.getNative()).getString();
    EXPECT_TRUE(ul::readUTF8TextFile(ul::CWindowsPath(L"\\\\?\\" + text + L"\\notes.")) == "dot");
    EXPECT_TRUE(ul::readUTF8TextFile(ul::CWindowsPath(text + L"\\notes.")) == "plain");
}

TEST(GetCurrentWorkDirectoryAsString, InAFolderWhoseNameEndsInADot_IsVerbatim) {
    for (const char* const name : {" ", "work."}) {
        const WorkFolder folder(name);
        EXPECT_TRUE(ul::getCurrentWorkDirectoryAsString().StartsWith(L"\\\\?\\Z:\\")) << name;
    }
    const WorkFolder folder("work.");
    for (const char* const name : {"a", "z:b"})
        ul::writeUTF8TextFile(ul::CWindowsPath(name), "here");
    EXPECT_TRUE(fs::exists("a") && fs::exists("b"));
    fs::create_directory("below");
    fs::current_path("below");
    EXPECT_TRUE(ul::getCurrentWorkDirectoryAsString().StartsWith(L"\\\\?\\Z:\\"));
}

TEST(GetCurrentWorkDirectoryAsString, OfANameThatHasNoPath_IsAFileError) {
    const TempFolder parent;
    const WorkFolder leftAtTheEnd;
    const std::pair<const char*, const char*> names[] = {{"back\\slash", "a name contains a backslash"},
                                                         {"no\xFFutf8", "its name is no valid UTF-8"}};
    for (const auto& [name, reason] : names) {
        fs::create_directory(parent.getNative() / name);
        fs::current_path(parent.getNative() / name);
        const ul::P<ul::CError> error = catchError<ul::CFileError>([] { ul::getCurrentWorkDirectoryAsString(); });
        ASSERT_TRUE(error);
        EXPECT_EQ(getProp(*error, "reason"), reason);
        EXPECT_EQ(error->getCode(), -1);
        EXPECT_THROW(ul::CWindowsPath("a"), ul::CFileError);
    }
}

TEST(GetCurrentWorkDirectoryAsString, OfARemovedFolder_IsAFileError) {
    const WorkFolder folder;
    fs::remove(fs::current_path());
    const ul::P<ul::CError> error = catchError<ul::CFileError>([] { ul::getCurrentWorkDirectoryAsString(); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->getCode(), ENOENT);
    EXPECT_STREQ(error->what(), "Cannot name the working directory '.': No such file or directory.");
}

} // namespace sarn_test
