// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/expect.h"
#include "support/temp_folder.h"

#include "ul/file.h"

namespace sarn_test {

/// Expects an error that names the operation and the file, with this code and reason if they are given.
template <class Action>
void expectFileError(const std::string& operation, const ul::CWindowsPath& path, int code, const std::string& reason,
                     Action action) {
    const ul::P<ul::CError> error = catchError<ul::CFileError>(action);
    ASSERT_TRUE(error);
    const std::string text = path.getString().toUTF8();
    const std::string given = getProp(*error, "reason");
    EXPECT_EQ(getProp(*error, "path"), text);
    EXPECT_NE(given, "");
    EXPECT_EQ(error->what(), "Cannot " + operation + " '" + text + "': " + (reason.empty() ? given : reason) + ".");
    EXPECT_TRUE(code == 0 || error->getCode() == code) << error->what() << " " << error->getCode();
}

inline void expectWriteError(const ul::CWindowsPath& path, int code = 0, const std::string& reason = "") {
    expectFileError("write file", path, code, reason, [&] { ul::writeUTF8TextFile(path, "new"); });
}

inline void expectOpenError(const ul::CWindowsPath& path, int code = 0, const std::string& reason = "") {
    expectFileError("open file", path, code, reason, [&] { ul::CWindowsFileInStream stream(path); });
}

/// A folder for a file "f".
struct FileFixture : testing::Test {
    ul::CWindowsPath write(const std::string& content) const { return folder.write("f", content); }
    /// Expects that the folder contains only "f" with this content.
    void expectOnly(const std::string& content) const {
        EXPECT_EQ(folder.read("f"), content);
        EXPECT_EQ(folder.list(), std::vector<std::string>{"f"});
    }

    const TempFolder folder;
    const ul::CWindowsPath path = folder.getPath("f");
};
using CWindowsFileInStream = FileFixture;
using ReadUTF8TextFile = FileFixture;
using WriteUTF8TextFile = FileFixture;

} // namespace sarn_test
