// SPDX-License-Identifier: Apache-2.0
// Working directories that exist only outside Windows.
#include "../file_fixture.h"

#include <cerrno>

namespace sarn_test {

namespace fs = std::filesystem;

TEST(GetCurrentWorkDirectoryAsString, InAFolderWhoseNameEndsInADot_IsVerbatim) {
    const WorkFolder folder("work.");
    EXPECT_TRUE(ul::getCurrentWorkDirectoryAsString().StartsWith(L"\\\\?\\Z:\\"));
    for (const char* const name : {"a", "z:b"})
        ul::writeUTF8TextFile(ul::CWindowsPath(name), "here");
    EXPECT_TRUE(fs::exists("a") && fs::exists("b"));
}

TEST(GetCurrentWorkDirectoryAsString, OfANameThatHasNoPath_IsAFileError) {
    const TempFolder parent;
    const WorkFolder leftAtTheEnd;
    const std::pair<const char*, const char*> names[] = {{"back\\slash", "a name contains a backslash"},
                                                         {"no\xFFutf8", "its name is no valid UTF-8"}};
    for (const auto& [name, reason] : names) {
        fs::create_directory(parent.getNative() / name);
        fs::current_path(parent.getNative() / name);
        const ul::P<ul::CError> error = catchError<ul::CFileError>([] { ul::getCurrentWorkDirectoryAsString(); });
        ASSERT_TRUE(error);
        EXPECT_EQ(getProp(*error, "reason"), reason);
        EXPECT_THROW(ul::CWindowsPath("a"), ul::CFileError);
    }
}

TEST(GetCurrentWorkDirectoryAsString, OfARemovedFolder_IsAFileError) {
    const WorkFolder folder;
    fs::remove(fs::current_path());
    const ul::P<ul::CError> error = catchError<ul::CFileError>([] { ul::getCurrentWorkDirectoryAsString(); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->getCode(), ENOENT);
    EXPECT_STREQ(error->what(), "Cannot name the working directory '.': No such file or directory.");
}

} // namespace sarn_test
