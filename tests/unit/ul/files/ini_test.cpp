// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/ini_values.h"
#include "support/markdown_table.h"
#include "support/temp_folder.h"

#include "ul/ini.h"

namespace sarn_test {

namespace {

using Values = std::vector<std::string>;

ul::P<ul::CINIContent> parse(const std::string& text) {
    Buffer data = makeBuffer(toBytes(text));
    return ul::CINIContent::parseData(data);
}

/// All values as "/section/name=value", in order.
Values list(const ul::CINIContent& content) {
    Values values;
    forEachValue(content, [&](const std::string& section, const std::string& name, const std::string& value) {
        values.push_back("/" + section + "/" + name + "=" + value);
    });
    return values;
}

void replaceAll(std::string& text, const std::string& what, const std::string& by) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
        text.replace(at, what.size(), by);
}

/// Resolves the documentation's escape sequences.
std::string unescape(std::string text) {
    replaceAll(text, "\\n", "\n");
    replaceAll(text, "\\r", "\r");
    replaceAll(text, "\\t", "\t");
    replaceAll(text, "\\uFEFF", "\xEF\xBB\xBF");
    replaceAll(text, "\\xFF", "\xFF");
    return text;
}

/// A rule of docs/configuration-format.md.
class INIRule : public testing::TestWithParam<MarkdownRow> {};

const std::string refusedInLine = "Refused in line ";
const std::string refusedAtByte = "Refused at byte ";

} // namespace

TEST_P(INIRule, Holds) {
    const MarkdownRow& row = GetParam();
    const std::string text = row.code[0].empty() ? "" : unescape(row.code[0][0]);
    const std::string& result = row.cells[1];
    if (result.find(refusedInLine) == 0) {
        const std::string rest = result.substr(refusedInLine.size());
        expectError(("Invalid INI text in line " + rest + ".").c_str(), {"line", rest.substr(0, rest.find(':'))},
                    [&] { parse(text); });
    } else if (result.find(refusedAtByte) == 0) {
        const std::string position = result.substr(refusedAtByte.size());
        expectError("Invalid UTF-8 text.", {"position", position}, [&] { parse(text); });
    } else {
        Values expected;
        for (const std::string& value : row.code[1])
            expected.push_back(unescape(value));
        EXPECT_EQ(list(*parse(text)), expected);
    }
}

INSTANTIATE_TEST_SUITE_P(Docs, INIRule, testing::ValuesIn(readMarkdownTable("configuration-format.md", "Text")),
                         getMarkdownRowName);

TEST(CINIContent, TryGetSectionValue_OfAMissingValue_LeavesTheOutputUnchanged) {
    const ul::P<ul::CINIContent> content = parse("[a]\nx=1\n");
    ul::String value("old");
    for (const auto& [section, name] : {std::pair("a", "y"), std::pair("b", "x"), std::pair("/", "x")})
        EXPECT_FALSE(content->tryGetSectionValue(value, section, name));
    EXPECT_EQ(value, "old");
    EXPECT_TRUE(content->tryGetSectionValue(value, "a", "x"));
    EXPECT_EQ(value, "1");
}

TEST(CINIContent, ValueBeforeAnySection_IsFoundOnlyInTheSectionWithAnEmptyName) {
    const ul::P<ul::CINIContent> content = parse("x=1\ny=2\n[/]\ny=3\n");
    EXPECT_EQ(list(*content), (Values{"//x=1", "//y=2", "///y=3"}));
    ul::String value;
    EXPECT_FALSE(content->tryGetSectionValue(value, "/", "x"));
}

TEST(CINIContent, SetSectionValue_ReplacesOrGoesToTheEnd) {
    const ul::P<ul::CINIContent> content = parse("[a]\nx=1\ny=2\n");
    content->setSectionValue("a", "x", "new");
    content->setSectionValue("b", "z", "3");
    content->setSectionValue("a", "w", "4");
    EXPECT_EQ(list(*content), (Values{"/a/x=new", "/a/y=2", "/a/w=4", "/b/z=3"}));
}

TEST(CINIContent, NameLists_ReplaceTheContentOfTheArray) {
    const ul::P<ul::CINIContent> content = parse("[a]\nx=1\n[b]\n");
    ul::TArray<ul::String> names;
    names.append("old");
    content->getSectionNames(names);
    EXPECT_EQ(names.getSize(), 2);
    content->getSectionValueNames("a", names);
    ASSERT_EQ(names.getSize(), 1);
    EXPECT_TRUE(names[0] == "x");
    content->getSectionValueNames("none", names);
    EXPECT_EQ(names.getSize(), 0);
}

TEST(CINIContent, OfAFileOrItsBytes_IsTheSame_AndErrorsNameTheFile) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("a.ini", "\xEF\xBB\xBF[a]\r\nx=1\r\n");
    const std::string text = path.getString().toUTF8();
    EXPECT_EQ(list(*ul::CINIContent::parseFile(path)), Values{"/a/x=1"});
    Buffer data(3, -1);
    ul::CINIContent::readFile(path, data);
    EXPECT_EQ(data.getUsed(), 3 + 10);
    EXPECT_EQ(list(*ul::CINIContent::parseData(data, path)), Values{"/a/x=1"});
    data.getData()[4] = 0xFF;
    expectError("Invalid UTF-8 text.", {"position", "1", "path", text},
                [&] { ul::CINIContent::parseData(data, path); });
    folder.write("a.ini", "[a\n");
    expectError("Invalid INI text in line 1: the section header has no ']'.", {"line", "1", "path", text},
                [&] { ul::CINIContent::parseFile(path); });
    EXPECT_THROW(ul::CINIContent::parseFile(folder.getPath("none")), ul::CFileError);
    EXPECT_THROW(ul::CINIContent::readFile(folder.getPath("none"), data), ul::CFileError);
}

TEST(CINIContent, ManyNames_AreReadQuickly) {
    std::string text = "[a]\n";
    for (int i = 0; i < 100000; ++i)
        text += "name" + std::to_string(i) + "=" + std::to_string(i) + "\n[s" + std::to_string(i) + "]\n";
    const ul::P<ul::CINIContent> content = parse(text);
    ul::String value;
    EXPECT_TRUE(content->tryGetSectionValue(value, "s99998", "name99999") && value == "99999");
}

TEST(CINIContent, VeryLongLine_IsRead) {
    const std::string value(1 << 20, 'v');
    EXPECT_EQ(list(*parse("[a]\nx=" + value)), Values{"/a/x=" + value});
}

} // namespace sarn_test
