// SPDX-License-Identifier: Apache-2.0
// Whose file takes the place of another, with which rights, and what is not replaced.
#include "support/expect.h"
#include "support/other_user.h"
#include "support/temp_folder.h"

#include "ul/file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <thread>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

namespace sarn_test {

namespace fs = std::filesystem;

namespace {

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

} // namespace

TEST_F(ReplacedFile, OfTheCaller_KeepsItsPermissionBits) {
    ::umask(0077);
    const ul::CWindowsPath path = m_folder.write("f", "old");
    for (const mode_t mode : {0600U, 0644U, 0666U, 0755U, 0200U}) {
        setMode("f", mode);
        ul::writeUTF8TextFile(path, "new");
        EXPECT_EQ(getMode("f"), mode);
    }
    ul::writeUTF8TextFile(m_folder.getPath("g"), "new");
    EXPECT_EQ(getMode("g"), 0600U) << "a new file follows the creation mask";
}

TEST_F(ReplacedFile, OfTheCaller_NeverKeepsMoreThanPermissionBits) {
    const ul::CWindowsPath path = m_folder.write("f", "old");
    for (const mode_t mode : {06777U, 04755U, 02755U, 01777U}) {
        setMode("f", mode);
        ul::writeUTF8TextFile(path, "new");
        EXPECT_EQ(getMode("f"), mode & 0777);
    }
}

TEST_F(ReplacedFile, PreparedBySomebodyElse_GivesHimNoRightsOfTheCaller) {
    for (const mode_t mode : {06777U, 0600U}) {
        const ul::CWindowsPath path = m_folder.write("f", "old");
        const bool isForeign = setOwner("f", nobody, nobody);
        EXPECT_EQ(isForeign, ::geteuid() == 0);
        setMode("f", mode);
        ul::writeUTF8TextFile(path, "new");
        EXPECT_EQ(m_folder.read("f"), "new");
        EXPECT_EQ(getStatus("f").st_uid, ::geteuid());
        EXPECT_EQ(getMode("f"), isForeign ? 0644U : mode & 0777);
    }
}

TEST_F(ReplacedFile, OfTheCallerAndAnotherGroup_GivesTheNewGroupNoMoreThanItHad) {
    ::umask(0);
    const ul::CWindowsPath path = m_folder.write("f", "old");
    const bool isForeign = setOwner("f", ::geteuid(), nobody);
    setMode("f", 02750);
    ul::writeUTF8TextFile(path, "new");
    EXPECT_EQ(getMode("f"), isForeign ? 0640U : 0750U) << "as a new file, and within what the old one had";
    EXPECT_EQ(getStatus("f").st_gid, ::getegid());
}

TEST_F(ReplacedFile, InAFolderThatGivesItsGroup_StaysAsPrivateAsItWas) {
    if (::geteuid() == 0) {
        ASSERT_TRUE(setOwner("", 0, nobody));
    }
    setMode("", 02755);
    const ul::CWindowsPath path = m_folder.write("f", "old");
    setMode("f", 0600);
    ul::writeUTF8TextFile(path, "new");
    EXPECT_EQ(getMode("f"), 0600U);
    EXPECT_EQ(getStatus("f").st_gid, getStatus("").st_gid);
}

TEST_F(ReplacedFile, ThatMayNotBeWritten_IsRefused) {
    openFolder();
    expectAsOrdinaryUser([&] {
        const ul::CWindowsPath path = m_folder.write("f", "old");
        setMode("f", 0444);
        expectFileError("write file", "f", EACCES, [&] { ul::writeUTF8TextFile(path, "new"); });
        EXPECT_EQ(m_folder.read("f"), "old");
        EXPECT_EQ(m_folder.list(), std::vector<std::string>{"f"});
    });
}

TEST_F(ReplacedFile, InAFolderThatMayOnlyBeWritten_IsReplacedWithoutAnError) {
    openFolder();
    for (const mode_t mode : {0300U, 0333U}) {
        expectAsOrdinaryUser([&] {
            const ul::CWindowsPath path = m_folder.write("f", "old");
            setMode("", mode);
            ul::writeUTF8TextFile(path, "new");
            ul::writeUTF8TextFile(m_folder.getPath("g"), "another");
            setMode("", 0755);
            EXPECT_EQ(m_folder.read("f"), "new");
            EXPECT_EQ(m_folder.list(), (std::vector<std::string>{"f", "g"}));
        });
    }
}

TEST_F(ReplacedFile, ThatIsALink_LeavesWhatItLeadsToAndTakesNoRightsFromIt) {
    m_folder.write("target", "old");
    setMode("target", 06777);
    for (const char* const target : {"target", "none", "."}) {
        fs::create_symlink(target, m_folder.getNative("link"));
        ul::writeUTF8TextFile(m_folder.getPath("link"), "new");
        EXPECT_EQ(m_folder.read("link"), "new");
        EXPECT_FALSE(fs::is_symlink(m_folder.getNative("link")));
        EXPECT_EQ(getMode("link"), 0644U);
        EXPECT_EQ(m_folder.read("target"), "old");
        EXPECT_EQ(getMode("target"), 06777U);
        fs::remove(m_folder.getNative("link"));
    }
    EXPECT_EQ(m_folder.list(), std::vector<std::string>{"target"});
}

TEST_F(ReplacedFile, ThatIsAFIFO_IsRefusedWithoutWaiting) {
    ASSERT_EQ(::mkfifo(m_folder.getNative("fifo").c_str(), 0666), 0);
    expectRefused("fifo");
    fs::create_symlink("fifo", m_folder.getNative("link"));
    expectFileError("open file", "link", -1, [&] { ul::readUTF8TextFile(m_folder.getPath("link")); });
}

TEST_F(ReplacedFile, ThatIsASocket_IsRefused) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    m_folder.getNative("socket").string().copy(address.sun_path, sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    expectRefused("socket");
    ::close(socket);
}

TEST_F(ReplacedFile, ThatIsADevice_IsRefused) {
    if (::geteuid() == 0) {
        // Not the system's own, which would be gone if this failed.
        ASSERT_EQ(::mknod(m_folder.getNative("null").c_str(), S_IFCHR | 0666, makedev(1, 3)), 0);
        expectRefused("null");
    } else {
        const ul::P<ul::CError> error =
            catchError<ul::CFileError>([] { ul::writeUTF8TextFile(ul::CWindowsPath("/dev/null"), "x"); });
        ASSERT_TRUE(error);
        EXPECT_STREQ(error->what(), "Cannot write file 'Z:\\dev\\null': it is not a regular file.");
    }
    for (const char* const device : {"/dev/zero", "/dev/null", "/dev/tty"})
        EXPECT_THROW(ul::CWindowsFileInStream stream{ul::CWindowsPath(device)}, ul::CFileError) << device;
}

TEST_F(ReplacedFile, ThatIsAFolder_IsRefused) {
    fs::create_directory(m_folder.getNative("d"));
    expectFileError("write file", "d", EISDIR, [&] { ul::writeUTF8TextFile(m_folder.getPath("d"), "x"); });
    expectFileError("open file", "d", EISDIR, [&] { ul::readUTF8TextFile(m_folder.getPath("d")); });
    EXPECT_EQ(m_folder.list(), std::vector<std::string>{"d"});
    const ul::P<ul::CError> error =
        catchError<ul::CFileError>([] { ul::writeUTF8TextFile(ul::CWindowsPath("/"), "x"); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->getCode(), EISDIR);
}

TEST_F(ReplacedFile, InAFolderThatIsNotThere_IsNamedInTheError) {
    const auto write = [&](const char* name) { ul::writeUTF8TextFile(m_folder.getPath(name), "x"); };
    expectFileError("write file", "none/f", ENOENT, [&] { write("none/f"); });
    m_folder.write("f", "old");
    expectFileError("write file", "f/g", ENOTDIR, [&] { write("f/g"); });
}

TEST_F(ReplacedFile, WithTheLongestName_IsReplaced) {
    const std::string name(255, 'n');
    for (const char* const text : {"first", "second"}) {
        ul::writeUTF8TextFile(m_folder.getPath(name), text);
        EXPECT_EQ(m_folder.read(name), text);
    }
    EXPECT_EQ(m_folder.list(), std::vector<std::string>{name});
}

TEST_F(ReplacedFile, WithTheLongestPath_IsReplaced) {
    constexpr std::size_t longest = 4095;
    fs::path deep = m_folder.getNative();
    while (deep.native().size() < longest - 2) {
        deep /= std::string(std::min<std::size_t>(200, longest - 3 - deep.native().size()), 'd');
        fs::create_directory(deep);
    }
    const ul::CWindowsPath path = TempFolder::toPath(deep / "f");
    ASSERT_EQ((deep / "f").native().size(), longest);
    for (const char* const text : {"first", "second"}) {
        ul::writeUTF8TextFile(path, text);
        EXPECT_EQ(ul::readUTF8TextFile(path).toUTF8(), text);
    }
}

TEST_F(ReplacedFile, ByTwoWritersAtOnce_IsOneOrTheOther) {
    const ul::CWindowsPath path = m_folder.write("f", "");
    const auto writeOften = [&path](wchar_t character) {
        for (int i = 0; i < 200; ++i)
            ul::writeUTF8TextFile(path, ul::String(std::wstring(5000, character)));
    };
    std::thread first(writeOften, L'a');
    std::thread second(writeOften, L'b');
    for (int i = 0; i < 200; ++i) {
        const std::string content = ul::readUTF8TextFile(path).toUTF8();
        EXPECT_TRUE(content.empty() || content == std::string(5000, content.front()));
    }
    first.join();
    second.join();
    EXPECT_EQ(fs::file_size(m_folder.getNative("f")), 5000U);
    EXPECT_EQ(m_folder.list(), std::vector<std::string>{"f"});
}

} // namespace sarn_test
