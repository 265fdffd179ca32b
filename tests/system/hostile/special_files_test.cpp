// SPDX-License-Identifier: Apache-2.0
// Links, other files that are not regular, and a disk without room.
#include "replaced_file.h"

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
