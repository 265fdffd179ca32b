// SPDX-License-Identifier: Apache-2.0
// Files that fail, and files that only exist outside Windows.
#include "support/expect.h"
#include "support/temp_folder.h"

#include "ul/file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <fstream>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace sarn_test {

namespace fs = std::filesystem;

namespace {

/// While it lives, files cannot grow beyond `size` bytes.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t size) : m_previousHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &m_previous);
        const rlimit limit{size, m_previous.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &m_previous);
        std::signal(SIGXFSZ, m_previousHandler);
    }

private:
    rlimit m_previous{};
    void (*m_previousHandler)(int);
};

template <class Action>
void expectFileErrorCode(int code, Action action) {
    const ul::P<ul::CError> error = catchError<ul::CFileError>(action);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->getCode(), code) << error->what();
}

} // namespace

TEST(WriteUTF8TextFile, DiskFullHalfWay_LeavesTheOldFileAndNothingBeside) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "old");
    {
        const FileSizeLimit limit(4096);
        expectFileErrorCode(EFBIG, [&] { ul::writeUTF8TextFile(path, ul::String(std::wstring(100000, L'x'))); });
    }
    EXPECT_EQ(folder.read("f"), "old");
    EXPECT_EQ(folder.list(), std::vector<std::string>{"f"});
}

TEST(WriteUTF8TextFile, InAFolderThatTakesNoFiles_IsAFileError) {
    expectFileErrorCode(ENOENT, [] { ul::writeUTF8TextFile(ul::CWindowsPath("/proc/self/none"), "x"); });
}

TEST(WriteUTF8TextFile, AtTheTopOfAFileSystem_GoesThroughThatOneOnly) {
    ASSERT_TRUE(fs::is_directory("/dev/shm")) << "this test needs a file system of its own to write to";
    const std::string name = "/dev/shm/sarn-test-" + std::to_string(::getpid());
    ul::writeUTF8TextFile(ul::CWindowsPath(name.c_str()), "text");
    EXPECT_EQ(fs::file_size(name), 4U);
    fs::remove(name);
}

TEST(WriteUTF8TextFile, FileThatSomebodyReads_IsReplacedAndTheReaderGoesOnWithTheOldOne) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", std::string(100000, 'x'));
    ul::CWindowsFileInStream reader(path);
    ul::writeUTF8TextFile(path, "new");
    EXPECT_EQ(folder.read("f"), "new");
    std::string content(100000, '\0');
    reader.read(content.data(), 100000);
    EXPECT_EQ(content, std::string(100000, 'x'));
}

TEST(WriteUTF8TextFile, Path_IsShownAsThePathsTextInTheError) {
    const ul::P<ul::CError> error =
        catchError<ul::CFileError>([] { ul::readUTF8TextFile(ul::CWindowsPath("/no/such/file")); });
    ASSERT_TRUE(error);
    EXPECT_STREQ(error->what(), "Cannot open file 'Z:\\no\\such\\file': No such file or directory.");
}

TEST(CWindowsFileInStream, ReadThatFails_IsAFileError) {
    // The process's own memory cannot be read at address 0.
    ul::CWindowsFileInStream stream(ul::CWindowsPath("/proc/self/mem"));
    char data[1];
    expectFileErrorCode(EIO, [&] { stream.readLax(data, 1); });
    expectFileErrorCode(EIO, [&] { stream.isEndOfStream(); });
}

TEST(CWindowsFileInStream, LengthThatTheSystemDoesNotTell_IsAFileError) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "abc");
    // The stream gets the lowest number that is free, which is closed without its knowledge.
    const int descriptor = ::dup(STDERR_FILENO);
    ::close(descriptor);
    const ul::CWindowsFileInStream stream(path);
    ASSERT_EQ(::close(descriptor), 0);
    expectErrorOf<ul::CFileError>(
        ("Cannot get size of file '" + path.getString().toUTF8() + "': Bad file descriptor.").c_str(),
        [&] { stream.getLength(); });
}

TEST(CWindowsFileInStream, FileWithoutASize_IsReadToItsEnd) {
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

TEST(CWindowsFileInStream, EndOfAFile_AfterAnInterruptedCallOfSomebodyElses_IsTheEnd) {
    const TempFolder folder;
    ul::CWindowsFileInStream stream(folder.write("f", ""));
    char data[1];
    errno = EINTR;
    EXPECT_EQ(stream.readLax(data, 1), 0);
}

TEST(CWindowsFileInStream, InAProcessWithoutStandardInput_IsOpened) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "abc");
    const int standardInput = ::dup(STDIN_FILENO);
    ASSERT_GE(standardInput, 0);
    ::close(STDIN_FILENO);
    {
        // It gets the number that is free.
        ul::CWindowsFileInStream stream(path);
        char data[3];
        EXPECT_EQ(stream.readLax(data, 3), 3);
        EXPECT_EQ(std::string(data, 3), "abc");
    }
    EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), -1) << "it is closed with the stream";
    ::dup2(standardInput, STDIN_FILENO);
    ::close(standardInput);
}

TEST(CWindowsFileInStream, FileBeyond4GiB_HasItsLength) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "abc");
    fs::resize_file(folder.getNative("f"), 5368709120U);
    const ul::CWindowsFileInStream stream(path);
    EXPECT_EQ(stream.getLength(), 5368709120);
    expectErrorOf<ul::CFileError>(
        ("Cannot read file '" + path.getString().toUTF8() + "': it is too large to be held in memory.").c_str(),
        [&] { ul::readUTF8TextFile(path); });
}

TEST(CWindowsFileInStream, Descriptor_IsClosedByExecAndReadsAsAnyOther) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "abc");
    // The stream gets the lowest number that is free.
    const int descriptor = ::dup(STDERR_FILENO);
    ::close(descriptor);
    const ul::CWindowsFileInStream stream(path);
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::fcntl(descriptor, F_GETFL) & (O_NONBLOCK | O_ACCMODE), O_RDONLY);
}

TEST(CWindowsFileInStream, ClosedAndFailedStreams_LeaveNoDescriptorOpen) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "abc");
    const auto countDescriptors = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const auto before = countDescriptors();
    { ul::CWindowsFileInStream stream(path); }
    EXPECT_THROW(ul::CWindowsFileInStream(TempFolder::toPath(folder.getNative())), ul::CFileError);
    ul::writeUTF8TextFile(path, "x");
    fs::create_directory(folder.getNative("d"));
    EXPECT_THROW(ul::writeUTF8TextFile(folder.getPath("d"), "x"), ul::CFileError);
    EXPECT_EQ(countDescriptors(), before);
}

TEST(CWindowsFileInStream, NameThatIsNoUnicode_IsAFileError) {
    const auto open = [] { ul::CWindowsFileInStream stream(ul::CWindowsPath(L"/a\xD800")); };
    expectErrorOf<ul::CFileError>("Cannot open file 'Z:\\a?': its name is no valid Unicode text.", open);
    expectFileErrorCode(-1, open);
}

TEST(CWindowsFileInStream, VerbatimPath_ReachesNamesThatEndInDotsAndSpaces) {
    const TempFolder folder;
    std::ofstream(folder.getNative() / "notes.") << "dot";
    std::ofstream(folder.getNative() / "notes") << "plain";
    const ul::String text = TempFolder::toPath(folder.getNative()).getString();
    EXPECT_TRUE(ul::readUTF8TextFile(ul::CWindowsPath(L"\\\\?\\" + text + L"\\notes.")) == "dot");
    EXPECT_TRUE(ul::readUTF8TextFile(ul::CWindowsPath(text + L"\\notes.")) == "plain");
}

} // namespace sarn_test
