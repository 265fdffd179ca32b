// SPDX-License-Identifier: Apache-2.0
// In which steps a file is replaced, and how the failure of each is reported.
#include "failures/imported_calls.h"
#include "support/expect.h"
#include "support/temp_folder.h"

#include "ul/file.h"

#include <gtest/gtest.h>

#include <functional>

#include <sys/stat.h>
#include <unistd.h>

namespace sarn_test {

namespace {

class FileStepsTest : public testing::Test {
protected:
    FileStepsTest() { installReplacements(); }

    /// Lets each system call of `action` fail, with all that come after it, so that cleaning up fails, too. The error
    /// must be that of the first, about the file that was asked for.
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
            if (call.isIgnored)
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

TEST_F(FileStepsTest, NewContent_IsOnTheDiskBeforeItGetsTheNameAndThenTheNameIs) {
    const FileSteps steps;
    ul::writeUTF8TextFile(m_file, "new");
    EXPECT_EQ(steps.get(),
              (std::vector<std::string>{"create as the only one", "flush file", "rename", "flush folder"}));
}

TEST_F(FileStepsTest, EachFailureOfWriting_IsReportedWithItsReasonAndTheFileThatWasAskedFor) {
    expectEachFailureReported([&] { ul::writeUTF8TextFile(m_file, "new"); });
}

TEST_F(FileStepsTest, EachFailureOfReading_IsReportedWithItsReasonAndTheFileThatWasAskedFor) {
    expectEachFailureReported([&] { ul::readUTF8TextFile(m_file); });
}

TEST_F(FileStepsTest, FileOfSomebodyElse_GivesTheNewOneNoRights) {
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
    const PretendedOwner somebodyElse(::geteuid() + 1);
    EXPECT_EQ(writeAndGetMode(), 0644U);
    ::umask(mask);
}

} // namespace sarn_test
