// SPDX-License-Identifier: Apache-2.0
// What is so on Windows only.
#include "support/temp_folder.h"

#include "ul/error.h"
#include "ul/file.h"

#include <gtest/gtest.h>

namespace sarn_test {

TEST(WriteUTF8TextFile, FileThatSomebodyReads_IsNotReplacedOnWindows) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "old");
    {
        const ul::CWindowsFileInStream reader(path);
        EXPECT_THROW(ul::writeUTF8TextFile(path, "new"), ul::CFileError);
    }
    EXPECT_EQ(folder.read("f"), "old");
    EXPECT_EQ(folder.list(), std::vector<std::string>{"f"}) << "nothing is left beside it";
    ul::writeUTF8TextFile(path, "new");
    EXPECT_EQ(folder.read("f"), "new");
}

} // namespace sarn_test
