// SPDX-License-Identifier: Apache-2.0
// Working directories that only exist outside Windows.
#include "support/expect.h"
#include "support/temp_folder.h"

#include "ul/file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

namespace sarn_test {

namespace fs = std::filesystem;

TEST(GetCurrentWorkDirectoryAsString, InAFolderWhoseNameEndsInADot_IsVerbatim) {
    const TempFolder parent;
    const fs::path folder = parent.getNative() / "work.";
    fs::create_directory(folder);
    const fs::path before = fs::current_path();
    fs::current_path(folder);
    ul::writeUTF8TextFile(ul::CWindowsPath("a"), "here");
    EXPECT_TRUE(fs::exists(folder / "a"));
    EXPECT_TRUE(ul::getCurrentWorkDirectoryAsString().StartsWith(L"\\\\?\\Z:\\"));
    ul::writeUTF8TextFile(ul::CWindowsPath("z:b"), "here");
    EXPECT_TRUE(fs::exists(folder / "b"));
    fs::current_path(before);
}

TEST(GetCurrentWorkDirectoryAsString, OfANameThatHasNoPath_IsAFileError) {
    const TempFolder parent;
    const fs::path before = fs::current_path();
    const std::pair<const char*, const char*> names[] = {{"back\\slash", "a name contains a backslash"},
                                                         {"no\xFFutf8", "its name is no valid UTF-8"}};
    for (const auto& [name, reason] : names) {
        const fs::path folder = parent.getNative() / name;
        fs::create_directory(folder);
        fs::current_path(folder);
        const ul::P<ul::CError> error = catchError<ul::CFileError>([] { ul::getCurrentWorkDirectoryAsString(); });
        ASSERT_TRUE(error);
        ul::String told;
        EXPECT_TRUE(error->getProps().tryGet("reason", told));
        EXPECT_EQ(told.toUTF8(), reason);
        EXPECT_THROW(ul::CWindowsPath("a"), ul::CFileError);
    }
    fs::current_path(before);
}

TEST(GetCurrentWorkDirectoryAsString, OfARemovedFolder_IsAFileError) {
    const fs::path before = fs::current_path();
    {
        const TempFolder folder;
        fs::current_path(folder.getNative());
    }
    const ul::P<ul::CError> error = catchError<ul::CFileError>([] { ul::getCurrentWorkDirectoryAsString(); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->getCode(), ENOENT);
    EXPECT_STREQ(error->what(), "Cannot name the working directory '.': No such file or directory.");
    fs::current_path(before);
}

} // namespace sarn_test
