// SPDX-License-Identifier: Apache-2.0
// The steps in which a file is replaced, and the errors of their failures.
#include "failures/injection.h"
#include "support/expect.h"
#include "support/temp_folder.h"

#include "ul/file.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sarn_test {

namespace {

struct FileStepsTest : testing::Test {
    /// Makes each system call of `action` fail with all calls after it, so the clean-up fails too. The error must be
    /// that of the first call and must name the file of the caller.
    void expectEachFailureReported(const std::function<void()>& action) {
        for (int index = 0;; ++index) {
            m_folder.write("file", "old");
            const Injection injection(false, index, Injection::Duration::FromThenOn);
            ul::P<ul::CError> caught;
            try {
                action();
            } catch (ul::CError& error) {
                caught = error.clone();
            }
            if (!injection.hasHappened())
                break;
            const ImportedCall& call = injection.getFirst();
            SCOPED_TRACE(call.name);
            if (call.has(ignored))
                continue;
            ASSERT_TRUE(caught);
            if (call.name == std::string("getrandom"))
                continue;
            EXPECT_EQ(caught->getCode(), call.error) << caught->what();
            ul::String path;
            EXPECT_TRUE(caught->getProps().tryGet("path", path));
            EXPECT_EQ(path.toUTF8(), m_file.getString().toUTF8());
            EXPECT_EQ(std::string(caught->what()).find(".tmp"), std::string::npos) << caught->what();
        }
    }

    const TempFolder m_folder;
    const ul::CWindowsPath m_file = m_folder.write("file", "old");
};

} // namespace

TEST_F(FileStepsTest, NewContent_IsSyncedBeforeItGetsTheName_AndThenTheNameIs) {
    const CallWatch watch;
    ul::writeUTF8TextFile(m_file, "new");
    EXPECT_THAT(watch.getNames(CallKind::File),
                testing::ContainsRegex("openat .*fsync close renameat fsync of a folder"));
    constexpr int exclusively = O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    EXPECT_EQ(watch.getCalls("openat").at(0).arguments[2] & exclusively, exclusively);
    EXPECT_EQ(watch.count("unlinkat"), 0) << "nobody else's file of that name is removed";
    constexpr int onlyFolder = O_DIRECTORY | O_CLOEXEC;
    EXPECT_EQ(watch.getCalls("open").at(0).arguments[1] & onlyFolder, onlyFolder);
    EXPECT_EQ(watch.getCalls("getrandom").at(0).arguments[1], 8) << "for a name of 16 hexadecimal digits";
}

TEST_F(FileStepsTest, WriteThatTakesNothing_IsRepeated) {
    CallWatch watch;
    watch.failWith(0, "write");
    ul::writeUTF8TextFile(m_file, "new");
    EXPECT_EQ(m_folder.read("file"), "new");
}

TEST_F(FileStepsTest, LargeFile_IsReadInLargePieces) {
    m_folder.write("file", std::string(1000000, 'x'));
    const CallWatch watch;
    EXPECT_EQ(ul::readUTF8TextFile(m_file).getLength(), 1000000);
    EXPECT_LE(watch.count("read"), 20);
}

TEST_F(FileStepsTest, FileThatAlreadyHasTheTemporaryName_StaysAndNothingIsReplaced) {
    CallWatch watch;
    std::string name;
    watch.before("openat", [&](const Call& call) {
        name = call.getPointer<char>(1);
        m_folder.write(name, "taken");
    });
    EXPECT_THROW(ul::writeUTF8TextFile(m_file, "new"), ul::CFileError);
    EXPECT_THAT(m_folder.list(), testing::UnorderedElementsAre("file", name));
    EXPECT_EQ(m_folder.read(name), "taken");
    EXPECT_EQ(m_folder.read("file"), "old");
}

TEST_F(FileStepsTest, NewFileWithDescriptor0_IsWritten) {
    const int standardInput = ::dup(STDIN_FILENO);
    ASSERT_GE(standardInput, 0);
    CallWatch watch;
    watch.before("openat", [](const Call&) { ::close(STDIN_FILENO); });
    ul::writeUTF8TextFile(m_file, "new");
    EXPECT_EQ(watch.getCalls("openat").at(0).result, 0);
    ::dup2(standardInput, STDIN_FILENO);
    ::close(standardInput);
    EXPECT_EQ(m_folder.read("file"), "new");
}

TEST_F(FileStepsTest, FileThatIsRead_IsOpenedWithoutWaitingOrTakingATerminal) {
    const CallWatch watch;
    EXPECT_EQ(ul::readUTF8TextFile(m_file), "old");
    constexpr int careful = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    EXPECT_EQ(watch.getCalls("open").at(0).arguments[1] & careful, careful);
}

TEST_F(FileStepsTest, EachFailureOfWritingAndReading_IsReportedWithItsReasonAndTheCallersFile) {
    expectEachFailureReported([&] { ul::writeUTF8TextFile(m_file, "new"); });
    expectEachFailureReported([&] { ul::readUTF8TextFile(m_file); });
}

TEST_F(FileStepsTest, FileOfAnotherUser_GivesTheNewOneNoRights) {
    const mode_t mask = ::umask(0022);
    const auto writeAndGetMode = [&] {
        const std::string name = m_folder.getNative("file").string();
        EXPECT_EQ(::chmod(name.c_str(), 06777), 0);
        ul::writeUTF8TextFile(m_file, "new");
        struct stat status {};
        EXPECT_EQ(::stat(name.c_str(), &status), 0);
        return status.st_mode & 07777;
    };
    EXPECT_EQ(writeAndGetMode(), 0777U);
    CallWatch watch;
    watch.after("fstatat", [](const Call& call) { call.getPointer<struct stat>(2)->st_uid = ::geteuid() + 1; });
    EXPECT_EQ(writeAndGetMode(), 0644U);
    ::umask(mask);
}

TEST_F(FileStepsTest, NewFileThatBelongsToAnother_GetsNoRightsOfTheOld) {
    ASSERT_EQ(::chmod(m_folder.getNative("file").c_str(), 0777), 0);
    CallWatch watch;
    watch.after("fstat", [](const Call& call) { ++call.getPointer<struct stat>(1)->st_uid; });
    ul::writeUTF8TextFile(m_file, "new");
    EXPECT_EQ(watch.count("fchmod"), 0);
}

} // namespace sarn_test
