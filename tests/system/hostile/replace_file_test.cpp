// SPDX-License-Identifier: Apache-2.0
// The owner and the permissions of a file that replaces another, links, other files that are not regular, and a disk
// without room.
#include "replaced_file.h"
#include "support/threads.h"

#include <cerrno>
#include <csignal>

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/sysmacros.h>
#include <sys/un.h>

namespace sarn_test {

namespace fs = std::filesystem;

namespace {

constexpr int room = 65536;

/// Lets files of this process grow to `room` bytes only.
int limitFiles() {
    const rlimit limit{room, room};
    std::signal(SIGXFSZ, SIG_IGN);
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    return EFBIG;
}

/// Mounts a disk of `room` bytes that only this process sees. Where the system does not allow that, limits its files.
/// Returns the error of a write that does not fit.
int mountSmallDisk(const fs::path& folder) {
    const bool isMounted = ::unshare(CLONE_NEWNS) == 0 &&
                           ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                           ::mount("none", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
    return isMounted ? ENOSPC : limitFiles();
}

} // namespace

namespace fs = std::filesystem;

TEST_F(ReplacedFile, OfTheCaller_KeepsItsPermissionBitsAndNoMore) {
    ::umask(0077);
    write("old");
    for (const mode_t mode : {0600U, 0644U, 0666U, 0755U, 0200U, 06777U, 04755U, 02755U, 01777U}) {
        setMode("f", mode);
        ul::writeUTF8TextFile(path, "new");
        EXPECT_EQ(getMode("f"), mode & 0777);
    }
    ul::writeUTF8TextFile(folder.getPath("g"), "new");
    EXPECT_EQ(getMode("g"), 0600U) << "a new file follows the creation mask";
}

TEST_F(ReplacedFile, OfAnotherUser_GivesThatUserNoRightsOfTheCaller) {
    for (const mode_t mode : {06777U, 0600U}) {
        write("old");
        const bool isForeign = setOwner("f", nobody, nobody);
        EXPECT_EQ(isForeign, ::geteuid() == 0);
        setMode("f", mode);
        ul::writeUTF8TextFile(path, "new");
        EXPECT_EQ(folder.read("f"), "new");
        EXPECT_EQ(getStatus("f").st_uid, ::geteuid());
        EXPECT_EQ(getMode("f"), mode & (isForeign ? 0644U : 0777U));
    }
}

TEST_F(ReplacedFile, OfTheCallerAndAnotherGroup_GivesTheNewGroupNoMoreRights) {
    ::umask(0);
    write("old");
    const bool isForeign = setOwner("f", ::geteuid(), nobody);
    setMode("f", 02750);
    ul::writeUTF8TextFile(path, "new");
    EXPECT_EQ(getMode("f"), isForeign ? 0640U : 0750U) << "as a new file, without rights that the old one lacked";
    EXPECT_EQ(getStatus("f").st_gid, ::getegid());
}

TEST_F(ReplacedFile, InAFolderThatPassesItsGroupOn_StaysAsPrivateAsBefore) {
    if (::geteuid() == 0) {
        ASSERT_TRUE(setOwner("", 0, nobody));
    }
    setMode("", 02755);
    write("old");
    setMode("f", 0600);
    ul::writeUTF8TextFile(path, "new");
    EXPECT_EQ(getMode("f"), 0600U);
    EXPECT_EQ(getStatus("f").st_gid, getStatus("").st_gid);
}

TEST_F(ReplacedFile, ThatMayNotBeWritten_IsRefused) {
    openFolder();
    expectAsOrdinaryUser([&] {
        write("old");
        setMode("f", 0444);
        expectWriteError(path, EACCES);
        expectOnly("old");
    });
}

TEST_F(ReplacedFile, InAFolderThatMayOnlyBeWritten_IsReplacedWithoutAnError) {
    openFolder();
    for (const mode_t mode : {0300U, 0333U}) {
        expectAsOrdinaryUser([&] {
            write("old");
            setMode("", mode);
            ul::writeUTF8TextFile(path, "new");
            ul::writeUTF8TextFile(folder.getPath("g"), "another");
            setMode("", 0755);
            EXPECT_EQ(folder.read("f"), "new");
            EXPECT_EQ(folder.list(), (std::vector<std::string>{"f", "g"}));
        });
    }
}

TEST_F(ReplacedFile, InAFolderThatMayOnlyBeWritten_IsReplacedByThisProcessToo) {
    const uid_t user = ::geteuid();
    openFolder();
    write("old");
    ASSERT_EQ(user == 0, setOwner("", nobody, nobody) && setOwner("f", nobody, nobody));
    setMode("", 0300);
    ASSERT_TRUE(user != 0 || ::seteuid(nobody) == 0);
    EXPECT_NO_THROW(ul::writeUTF8TextFile(path, "new"));
    EXPECT_EQ(::seteuid(user), 0);
    setMode("", 0755);
    expectOnly("new");
}

TEST_F(ReplacedFile, InAMissingFolder_IsNamedInTheError) {
    write("old");
    expectWriteError(folder.getPath("none/f"), ENOENT);
    expectWriteError(folder.getPath("f/g"), ENOTDIR);
}

TEST_F(ReplacedFile, WithTheLongestNameOrPath_IsReplaced) {
    constexpr std::size_t longest = 4095;
    fs::path deep = folder.getNative();
    while (deep.native().size() < longest - 2) {
        deep /= std::string(std::min<std::size_t>(200, longest - 3 - deep.native().size()), 'd');
        fs::create_directory(deep);
    }
    ASSERT_EQ((deep / "f").native().size(), longest);
    for (const fs::path& native : {deep / "f", folder.getNative(std::string(255, 'n'))}) {
        for (const char* const text : {"first", "second"}) {
            ul::writeUTF8TextFile(TempFolder::toPath(native), text);
            EXPECT_EQ(ul::readUTF8TextFile(TempFolder::toPath(native)), text);
        }
    }
    EXPECT_EQ(folder.list().size(), 2U);
}

TEST_F(ReplacedFile, ByTwoWritersAtOnce_IsOneOrTheOther) {
    write("");
    runOnThreads(3, [this](int number) {
        for (int i = 0; i < 200; ++i) {
            if (number < 2)
                ul::writeUTF8TextFile(path, ul::String(std::wstring(5000, number == 0 ? L'a' : L'b')));
            const std::string content = ul::readUTF8TextFile(path).toUTF8();
            EXPECT_TRUE(content.empty() || content == std::string(5000, content.front()));
        }
    });
    EXPECT_EQ(fs::file_size(folder.getNative("f")), 5000U);
    EXPECT_EQ(folder.list(), std::vector<std::string>{"f"});
}

TEST_F(ReplacedFile, ThatIsALink_LeavesItsTargetAndTakesNoRightsFromIt) {
    folder.write("target", "old");
    setMode("target", 06777);
    for (const char* const target : {"target", "none", "."}) {
        fs::create_symlink(target, folder.getNative("link"));
        ul::writeUTF8TextFile(folder.getPath("link"), "new");
        EXPECT_EQ(folder.read("link"), "new");
        EXPECT_FALSE(fs::is_symlink(folder.getNative("link")));
        EXPECT_EQ(getMode("link"), 0644U);
        EXPECT_EQ(folder.read("target"), "old");
        EXPECT_EQ(getMode("target"), 06777U);
        fs::remove(folder.getNative("link"));
    }
    EXPECT_EQ(folder.list(), std::vector<std::string>{"target"});
}

TEST_F(ReplacedFile, ThatIsAFIFO_IsRefusedWithoutWaiting) {
    ASSERT_EQ(::mkfifo(folder.getNative("fifo").c_str(), 0666), 0);
    expectRefused("fifo");
    fs::create_symlink("fifo", folder.getNative("link"));
    expectOpenError(folder.getPath("link"), -1, notRegular);
}

TEST_F(ReplacedFile, ThatIsASocket_IsRefused) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    folder.getNative("socket").string().copy(address.sun_path, sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    expectRefused("socket");
    ::close(socket);
}

TEST_F(ReplacedFile, ThatIsADevice_IsRefused) {
    if (::geteuid() == 0) {
        // A device of our own: a mistake would delete the system's.
        ASSERT_EQ(::mknod(folder.getNative("null").c_str(), S_IFCHR | 0666, makedev(1, 3)), 0);
        expectRefused("null");
    } else {
        expectWriteError(ul::CWindowsPath("/dev/null"), -1, notRegular);
    }
    for (const char* const device : {"/dev/zero", "/dev/null", "/dev/tty"})
        expectOpenError(ul::CWindowsPath(device));
}

TEST_F(ReplacedFile, ThatIsAFolder_IsRefused) {
    fs::create_directory(folder.getNative("d"));
    expectWriteError(folder.getPath("d"), EISDIR);
    expectOpenError(folder.getPath("d"), EISDIR);
    EXPECT_EQ(folder.list(), std::vector<std::string>{"d"});
    expectWriteError(ul::CWindowsPath("/"), EISDIR);
}

TEST_F(ReplacedFile, OnAFullDisk_StaysAsItIsAndLeavesRoomForASmallerOne) {
    const ul::String tooLarge(std::wstring(2 * room, L'x'));
    for (const bool isLimited : {false, true}) {
        expectInChild([&] {
            const int error = isLimited ? limitFiles() : mountSmallDisk(folder.getNative());
            write("old");
            for (int i = 0; i < 5; ++i) {
                expectFileError("write file", path, error, "", [&] { ul::writeUTF8TextFile(path, tooLarge); });
                expectOnly("old");
            }
            ul::writeUTF8TextFile(path, "new");
            expectOnly("new");
        });
    }
}

} // namespace sarn_test
