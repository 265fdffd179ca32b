// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "unit/ul/files/file_fixture.h"

#include <cstdio>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sarn_test {

constexpr char notRegular[] = "it is not a regular file";

/// A user and group without rights of their own.
constexpr unsigned nobody = 65534;

/// Expects `check` to pass in a forked process.
template <class Check>
void expectInChild(Check check) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        check();
        std::fflush(nullptr);
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "see the failures above";
}

/// Expects `check` to pass in a forked process with the rights of an ordinary user.
template <class Check>
void expectAsOrdinaryUser(Check check) {
    expectInChild([&] {
        ASSERT_TRUE(::geteuid() != 0 || (::setgid(nobody) == 0 && ::setuid(nobody) == 0));
        check();
    });
}

class ReplacedFile : public FileFixture {
protected:
    ~ReplacedFile() override { ::umask(m_previousMask); }

    struct stat getStatus(const std::string& name) const {
        struct stat status {};
        EXPECT_EQ(::lstat(folder.getNative(name).c_str(), &status), 0);
        return status;
    }
    mode_t getMode(const std::string& name) const { return getStatus(name).st_mode & 07777; }
    void setMode(const std::string& name, mode_t mode) const {
        ASSERT_EQ(::chmod(folder.getNative(name).c_str(), mode), 0);
    }
    /// Returns whether the process may do that, and is of another user or group itself.
    bool setOwner(const std::string& name, uid_t owner, gid_t group) const {
        return ::chown(folder.getNative(name).c_str(), owner, group) == 0 &&
               (owner != ::geteuid() || group != ::getegid());
    }
    /// Gives the folder to the ordinary user.
    void openFolder() const {
        if (::geteuid() == 0) {
            ASSERT_TRUE(setOwner("", nobody, nobody));
        }
    }

    /// Expects that a name which is not a regular file is neither replaced nor opened.
    void expectRefused(const std::string& name) const {
        const struct stat before = getStatus(name);
        const std::vector<std::string> names = folder.list();
        expectWriteError(folder.getPath(name), -1, notRegular);
        expectOpenError(folder.getPath(name), -1, notRegular);
        EXPECT_EQ(getStatus(name).st_mode, before.st_mode);
        EXPECT_EQ(getStatus(name).st_ino, before.st_ino);
        EXPECT_EQ(folder.list(), names);
    }

private:
    const mode_t m_previousMask = ::umask(0022);
};

} // namespace sarn_test
