// SPDX-License-Identifier: Apache-2.0
// A folder in which files are replaced, and how their status is looked at.
#pragma once

#include "support/expect.h"
#include "support/other_user.h"
#include "support/temp_folder.h"

#include "ul/file.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace sarn_test {

class ReplacedFile : public testing::Test {
protected:
    ~ReplacedFile() override { ::umask(m_previousMask); }

    struct stat getStatus(const std::string& name) const {
        struct stat status {};
        EXPECT_EQ(::lstat(m_folder.getNative(name).c_str(), &status), 0);
        return status;
    }
    mode_t getMode(const std::string& name) const { return getStatus(name).st_mode & 07777; }
    void setMode(const std::string& name, mode_t mode) const {
        ASSERT_EQ(::chmod(m_folder.getNative(name).c_str(), mode), 0);
    }
    /// False if the process may not do that.
    bool setOwner(const std::string& name, uid_t owner, gid_t group) const {
        return ::chown(m_folder.getNative(name).c_str(), owner, group) == 0;
    }
    /// Lets an ordinary user work in the folder, who owns it.
    void openFolder() const {
        if (::geteuid() == 0) {
            ASSERT_TRUE(setOwner("", nobody, nobody));
        }
    }

    /// Expects that something that is not a regular file is neither replaced nor opened.
    void expectRefused(const std::string& name) const {
        const struct stat before = getStatus(name);
        const std::vector<std::string> names = m_folder.list();
        expectFileError("write file", name, -1, [&] { ul::writeUTF8TextFile(m_folder.getPath(name), "x"); });
        expectFileError("open file", name, -1, [&] { ul::readUTF8TextFile(m_folder.getPath(name)); });
        EXPECT_EQ(getStatus(name).st_mode, before.st_mode);
        EXPECT_EQ(getStatus(name).st_ino, before.st_ino);
        EXPECT_EQ(m_folder.list(), names);
    }

    template <class Action>
    void expectFileError(const std::string& operation, const std::string& name, int code, Action action) const {
        const ul::P<ul::CError> error = catchError<ul::CFileError>(action);
        ASSERT_TRUE(error);
        const std::string path = m_folder.getPath(name).getString().toUTF8();
        const std::string start = "Cannot " + operation + " '" + path + "': ";
        const std::string message = error->what();
        EXPECT_EQ(message.compare(0, start.size(), start), 0) << message;
        ul::String property;
        EXPECT_TRUE(error->getProps().tryGet("path", property));
        EXPECT_EQ(property.toUTF8(), path);
        EXPECT_EQ(error->getCode(), code) << message;
        if (code == -1) {
            EXPECT_EQ(message, start + "it is not a regular file.");
        }
    }

    const TempFolder m_folder;
    const mode_t m_previousMask = ::umask(0022);
};

} // namespace sarn_test
