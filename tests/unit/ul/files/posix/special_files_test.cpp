// SPDX-License-Identifier: Apache-2.0
// Links, and what is not a regular file.
#include "replaced_file.h"

#include <cerrno>

#include <sys/socket.h>
#include <sys/sysmacros.h>
#include <sys/un.h>

namespace sarn_test {

namespace fs = std::filesystem;

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

} // namespace sarn_test
