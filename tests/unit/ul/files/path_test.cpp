// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/markdown_table.h"
#include "support/temp_folder.h"

#include "ul/path.h"

namespace sarn_test {

namespace {

ul::String fromUTF8(const std::string& text) {
    return ul::String::fromUTF8(text.data(), text.size());
}

std::string getPath(const std::string& text) {
    return ul::CWindowsPath(fromUTF8(text)).getString().toUTF8();
}

/// A rule of docs/paths.md.
class PathRule : public testing::TestWithParam<MarkdownRow> {
protected:
    /// Replaces the folder of the documentation's examples in `text` by an existing one.
    std::string inWorkFolder(std::string text) const {
        const std::string documented = "Z:\\srv\\x";
        const std::string parent = documented.substr(0, 6);
        if (text.compare(0, documented.size(), documented) == 0)
            return m_folder.getText() + text.substr(documented.size());
        if (text.compare(0, parent.size(), parent) == 0)
            return m_folder.getText() + "\\.." + text.substr(parent.size());
        return text;
    }

    const WorkFolder m_folder;
};

} // namespace

TEST_P(PathRule, Holds) {
    const MarkdownRow& row = GetParam();
    const std::string text = row.code[0].empty() ? "" : row.code[0][0];
    if (row.cells[1] == "refused") {
        expectErrorOf<ul::CBadPathError>(("Invalid path: " + text).c_str(), [&] { getPath(text); });
        return;
    }
    const std::string expected = inWorkFolder(row.code[1].at(0));
    // The expected text needs normalising only if it contains the folder's parent.
    EXPECT_EQ(getPath(text), expected.find("\\..") == std::string::npos ? expected : getPath(expected));
    EXPECT_EQ(getPath(getPath(text)), getPath(text)) << "a path's text is its own path";
}

INSTANTIATE_TEST_SUITE_P(Docs, PathRule, testing::ValuesIn(readMarkdownTable("paths.md", "Text")), getRowName);

TEST(CWindowsPath, EmbeddedNull_IsRefused) {
    expectErrorOf<ul::CBadPathError>("Invalid path: C:\\a",
                                     [] { ul::CWindowsPath(ul::String(std::wstring(L"C:\\a\0.txt", 9))); });
}

TEST(CWindowsPath, LongTexts_AreKept) {
    const std::string name(300, 'n');
    EXPECT_EQ(getPath("C:\\" + name + "/" + name), "C:\\" + name + "\\" + name);
    std::string deep = "C:";
    for (int i = 0; i < 10000; ++i)
        deep += "\\a\\..\\b";
    EXPECT_EQ(getPath(deep).size(), 2U + 20000U);
}

TEST(CWindowsPath, UnpairedSurrogate_IsPartOfTheName) {
    const ul::String text(L"C:\\a\xD800z");
    EXPECT_EQ(ul::CWindowsPath(text).getString(), text);
}

TEST(CWindowsPath, Comparison_ComparesTheTexts) {
    const ul::CWindowsPath path("C:\\a");
    const ul::CWindowsPath copy(path);
    EXPECT_TRUE(path == copy && path == ul::CWindowsPath("c:/./a") && !(path != copy));
    EXPECT_TRUE(path != ul::CWindowsPath("C:\\A") && ul::CWindowsPath("C:\\A") < path && !(path < copy));
}

TEST(CWindowsPathTraits, Functions_HandleEachKindOfRoot) {
    using Traits = ul::CWindowsPathTraits;
    EXPECT_EQ(Traits::getSep(), L'\\');
    EXPECT_STREQ(Traits::getAllSeps(), L"\\/");
    const std::pair<const char*, int> roots[] = {{"C:\\a", 3},
                                                 {"C:a", 2},
                                                 {"\\a", 1},
                                                 {"a", 0},
                                                 {"\\\\server\\share\\a", 15},
                                                 {"\\\\server", 8},
                                                 {"\\\\?\\C:\\a", 7},
                                                 {"\\\\?\\UNC\\server\\share\\a", 21},
                                                 {"\\\\?\\UNC\\s\\h\\a", 12},
                                                 {"\\\\?\\UNC", 7},
                                                 {"\\\\?\\UXC\\s\\h", 8},
                                                 {"\\\\?\\UNX\\s\\h", 8},
                                                 {"\\\\?\\{NC\\s\\h", 8},
                                                 {"\\\\?\\UNCX\\s", 9}};
    for (const auto& [text, length] : roots)
        EXPECT_EQ(Traits::getRootLength(text), length) << text;
    EXPECT_EQ(Traits::normalizeRoot("\\\\?\\UNC\\s\\h\\").toUTF8(), "\\\\?\\UNC\\s\\h\\");
    for (const char* const absolute : {"A:\\", "Z:\\", "a:\\", "z:\\", "\\\\s\\h", "\\\\?\\C:\\"})
        EXPECT_TRUE(Traits::isAbsolute(absolute)) << absolute;
    for (const char* const other : {"@:\\", "[:\\", "`:\\", "{:\\", "1:\\", "C:a", "\\a", "a"})
        EXPECT_FALSE(Traits::isAbsolute(other)) << other;
    EXPECT_TRUE(Traits::normalizeSeparators("a//b\\/c") == "a\\b\\c");
    EXPECT_TRUE(Traits::normalizeSeparators("//s/h//a") == "\\\\s\\h\\a");
    EXPECT_EQ(Traits::normalizeSeparators("////a").toUTF8(), "\\\\\\a");
    EXPECT_TRUE(Traits::normalizeRoot("c:\\") == "C:\\" && Traits::normalizeRoot("\\\\s").isEmpty());
    EXPECT_TRUE(Traits::normalizeRoot("") == "\\");
    EXPECT_TRUE(Traits::normalizeComponent("a. .") == "a" && Traits::normalizeComponent(" . ").isEmpty());
    EXPECT_TRUE(Traits::pathNeedsToBeNormalizedToBeValid("C:\\a"));
    EXPECT_FALSE(Traits::pathNeedsToBeNormalizedToBeValid("\\\\?\\C:\\a"));
    EXPECT_TRUE(Traits::makeAbsolute("a", "C:\\w") == "C:\\w\\a");
    EXPECT_TRUE(Traits::makeAbsolute("c:a", "\\\\?\\C:\\w.") == "\\\\?\\C:\\w.\\a");
    for (const char* const elsewhere : {"D:\\w", "\\\\s\\h\\w"})
        EXPECT_TRUE(Traits::makeAbsolute("c:a", elsewhere) == "c:\\a") << elsewhere;
    for (const char* const text : {"C:\\a\\", "C:\\a"})
        EXPECT_TRUE(Traits::finalizeNormalizedPath(text) == "C:\\a");
    EXPECT_TRUE(Traits::finalizeNormalizedPath("C:\\") == "C:\\");
}

TEST(GetCurrentWorkDirectoryAsString, NamesTheWorkingDirectory) {
    const WorkFolder folder;
    EXPECT_EQ(ul::getCurrentWorkDirectoryAsString().toUTF8(), folder.getText());
}

} // namespace sarn_test
