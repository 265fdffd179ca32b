// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/markdown_table.h"
#include "support/temp_folder.h"

namespace sarn_test {

namespace {

std::string getPath(const std::string& text) {
    return ul::CWindowsPath(ul::String::fromUTF8(text.data(), text.size())).getString().toUTF8();
}

/// A rule of docs/paths.md.
struct PathRule : testing::TestWithParam<MarkdownRow> {
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

bool isVerbatim(const std::string& text) {
    return text.compare(0, 4, "\\\\?\\") == 0;
}

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find_first_of("\\/", start)) != std::string::npos; start = end + 1)
        parts.push_back(text.substr(start, end - start));
    parts.push_back(text.substr(start));
    return parts;
}

/// The number of parts of a text that belong to its root, including the empty ones before a share.
std::size_t countRootParts(const std::string& text) {
    if (isVerbatim(text))
        return split(text)[3] == "UNC" ? 6 : 4;
    return text[1] == ':' ? 1 : 4;
}

/// Whether only ntpath accepts a text: it leads above the root, or has a name of only dots and spaces.
bool isRefused(const std::string& text) {
    const std::vector<std::string> parts = split(text);
    int depth = 0;
    for (std::size_t i = countRootParts(text); i < parts.size(); ++i) {
        if (parts[i] == "..") {
            if (--depth < 0)
                return true;
        } else if (!parts[i].empty() && parts[i] != ".") {
            if (!isVerbatim(text) && parts[i].find_first_not_of(". ") == std::string::npos)
                return true;
            ++depth;
        }
    }
    return false;
}

/// ntpath's result with an upper-case drive, a separator after a bare share, and without dots and spaces at the end
/// of names.
std::string adapt(const std::string& normalized) {
    const std::vector<std::string> parts = split(normalized);
    const std::size_t rootParts = countRootParts(normalized);
    std::string result;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        std::string part = parts[i];
        if (i >= rootParts && !isVerbatim(normalized))
            part.erase(part.find_last_not_of(". ") + 1);
        result += (i > 0 ? "\\" : "") + part;
    }
    if (result[0] == 'c' && result[1] == ':')
        result[0] = 'C';
    return parts.size() == rootParts ? result + "\\" : result;
}

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

INSTANTIATE_TEST_SUITE_P(Docs, PathRule, testing::ValuesIn(readMarkdownTable("paths.md", "Text")), getMarkdownRowName);

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

TEST(CWindowsPath, NamesThatEndInAnyOtherCharacterThanADotOrASpace_AreKept) {
    for (char last = '!'; last <= '~'; ++last)
        if (std::string("./\\").find(last) == std::string::npos) {
            const std::string text = std::string("C:\\a") + last;
            EXPECT_EQ(ul::CWindowsPath(text.c_str()).getString().toUTF8(), text);
        }
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
    // clang-format off
    const std::pair<const char*, int> roots[] = {
        {"C:\\a", 3}, {"C:a", 2}, {"\\a", 1}, {"a", 0}, {"\\\\server\\share\\a", 15}, {"\\\\server", 8},
        {"\\\\?\\C:\\a", 7}, {"\\\\?\\UNC\\server\\share\\a", 21}, {"\\\\?\\UNC\\s\\h\\a", 12},
        {"\\\\?\\UNC", 7}, {"\\\\?\\UXC\\s\\h", 8}, {"\\\\?\\UNX\\s\\h", 8}, {"\\\\?\\{NC\\s\\h", 8},
        {"\\\\?\\UNCX\\s", 9}};
    // clang-format on
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
    for (const char* const root : {"C:\\", "C:\\\\"})
        EXPECT_TRUE(Traits::finalizeNormalizedPath(root) == "C:\\");
}

TEST(GetCurrentWorkDirectoryAsString, NamesTheWorkingDirectory) {
    const WorkFolder folder;
    EXPECT_EQ(ul::getCurrentWorkDirectoryAsString().toUTF8(), folder.getText());
}

// docs/paths.md lists the differences, which adapt() applies to the results of Python's ntpath.
TEST(CWindowsPath, GeneratedTexts_AreNormalisedAsByNtpathExceptForDocumentedDifferences) {
    int taken = 0;
    int refused = 0;
    for (const Vector& vector : readVectors("paths.vec", {"text", "normalized"})) {
        const std::string text = toText(vector.getBytes("text"));
        if (isRefused(text)) {
            EXPECT_THROW(getPath(text), ul::CBadPathError) << text;
            ++refused;
        } else {
            EXPECT_EQ(getPath(text), adapt(toText(vector.getBytes("normalized")))) << text;
            ++taken;
        }
    }
    EXPECT_EQ(taken + refused, 800);
    EXPECT_GT(taken, 400);
    EXPECT_GT(refused, 100);
}

} // namespace sarn_test
