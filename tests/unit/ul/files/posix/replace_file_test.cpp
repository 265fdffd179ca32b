// SPDX-License-Identifier: Apache-2.0
// Whose file takes the place of another, and with which rights.
#include "replaced_file.h"

#include <algorithm>
#include <cerrno>
#include <thread>

namespace sarn_test {

namespace fs = std::filesystem;

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
