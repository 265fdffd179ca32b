// SPDX-License-Identifier: Apache-2.0
// The owner and the permissions of a file that replaces another.
#include "replaced_file.h"
#include "support/threads.h"

#include <algorithm>
#include <cerrno>

namespace sarn_test {

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
        EXPECT_EQ(getMode("f"), isForeign ? 0644U : mode & 0777);
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

} // namespace sarn_test
