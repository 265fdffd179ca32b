// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/temp_folder.h"

#include "sarn/host.h"

#include <filesystem>

namespace sarn_test {

namespace {

constexpr char umlautInUTF8[] = "\xC3\xA4";
constexpr char faceInUTF8[] = "\xF0\x9F\x98\x80";

} // namespace

TEST(Text, OfUTF8_IsDecodedWhereAStringWouldReadLatin1) {
    EXPECT_TRUE(ul::text(umlautInUTF8) == L"\u00E4");
    EXPECT_TRUE(ul::String(umlautInUTF8) == L"\u00C3\u00A4") << "the trap";
    EXPECT_EQ(ul::text(faceInUTF8).toUTF8(), faceInUTF8);
    EXPECT_EQ(ul::text(std::string("a\0b", 3)).getLength(), 3);
    expectError("Invalid UTF-8 text.", {"position", "1"}, [] { ul::text("a\xE4"); });
}

TEST(CText, OfEachKindOfText_IsThatText) {
    const ul::String text(L"\u00E4");
    for (const ul::CText& each : {ul::CText(umlautInUTF8), ul::CText(std::string(umlautInUTF8)),
                                  ul::CText(std::string_view(umlautInUTF8)), ul::CText(text), ul::CText(text + L"")})
        EXPECT_EQ(each.get(), text);
    expectError("Invalid UTF-8 text.", {"position", "0"}, [] { ul::CText("\xE4"); });
}

TEST(Path, OfUTF8_IsThePathOfTheDecodedText) {
    EXPECT_TRUE(ul::path("C:/donn\xC3\xA9"
                         "es/../b") == ul::CWindowsPath(L"C:\\b"));
    EXPECT_TRUE(ul::path(std::string(umlautInUTF8)) == ul::CWindowsPath(L"\u00E4"));
    EXPECT_THROW(ul::path(""), ul::CBadPathError);
}

TEST(Path, OfANativePath_NamesTheSameFileThereAndBack) {
    const TempFolder folder;
    std::vector<std::string> names = {"plain", "with space", umlautInUTF8, faceInUTF8, ".hidden"};
#ifndef _WIN32
    names.insert(names.end(), {"a:b", "dot.", "dots...", "space ", "...", " ", "NUL"});
#endif
    for (const std::string& name : names) {
        const ul::CWindowsPath path = ul::path(folder.getNative(name));
        ul::writeUTF8TextFile(path, ul::text(name));
        EXPECT_EQ(folder.read(name), name);
        EXPECT_EQ(folder.read(ul::native(path).u8string()), name);
        EXPECT_TRUE(ul::path(ul::native(path)) == path || ul::native(ul::path(ul::native(path))) == ul::native(path));
    }
}

TEST(Path, OfARelativeNativePath_IsBelowTheWorkingDirectory) {
    EXPECT_EQ(ul::native(ul::path(std::filesystem::path("file"))).filename(), "file");
    EXPECT_TRUE(ul::path(std::filesystem::path("file")) == ul::path("file"));
    for (const std::filesystem::path folder : {"a/..", "."})
        EXPECT_TRUE(ul::path(folder / "file") == ul::path("file"));
    EXPECT_TRUE(ul::path(std::filesystem::path("folder/")) == ul::path("folder"));
    EXPECT_THROW(ul::path(std::filesystem::path()), ul::CBadPathError);
}

#ifndef _WIN32
TEST(Path, OfANativeNameThatNoPathCanExpress_IsRefused) {
    EXPECT_THROW(ul::path(std::filesystem::path("back\\slash")), ul::CBadPathError);
    EXPECT_THROW(ul::path(std::filesystem::path("\xE4")), ul::CError);
}

TEST(Native, OfADriveThatIsMissing_RaisesTheErrorOfOpeningTheFile) {
    EXPECT_THROW(ul::native(ul::path("C:/file")), ul::CFileError);
    EXPECT_THROW(ul::native(ul::path("//server/share/file")), ul::CFileError);
    EXPECT_EQ(ul::native(ul::path("Z:/a/b")), "/a/b");
    EXPECT_EQ(ul::native(ul::path("\\\\?\\Z:\\a.\\b ")), "/a./b ");
}
#endif

TEST(Props, InARangeBasedLoop_AreInOrder) {
    ul::CProps props;
    std::string all;
    for (const auto& [name, value] : props)
        all += (name + value).toUTF8();
    EXPECT_EQ(all, "");
    props.add("a", "1").add("b", "2").add("a", "3");
    for (const auto& [name, value] : props)
        all += (name + "=" + value + ";").toUTF8();
    EXPECT_EQ(all, "a=1;b=2;a=3;");
}

TEST(FormatError, OfEachKind_HasEveryPartOfTheError) {
    EXPECT_EQ(ul::formatError(std::runtime_error("broken")), "broken");
    EXPECT_EQ(ul::formatError(ul::CBadStateError("Too late.")), "Too late.");
    EXPECT_EQ(ul::formatError(ul::CInvalidArgError("C::f", "invalid size", ul::CProps().add("size", "-1"))),
              "C::f: invalid size [size=-1]");
    const ul::CError cause("The disk is full.", "", 28, ul::CProps().add("path", "Z:\\a").add("reason", "full"),
                           nullptr);
    EXPECT_EQ(ul::formatError(ul::CError("The job failed.", "Try again.", -1, ul::CProps(), &cause)),
              "The job failed. (Try again.) Caused by: The disk is full. [path=Z:\\a, reason=full] Code 28.");
}

TEST(FormatError, OfAnyText_IsOneLineOfUTF8) {
    const ul::String text = ul::text(umlautInUTF8) + L"\nERROR: forged\x1B[31m\x7F\xDC00";
    EXPECT_EQ(ul::formatError(ul::CError(text, "", -1, ul::CProps().add("path", text), nullptr)),
              "\xC3\xA4?ERROR: forged?[31m?? [path=\xC3\xA4?ERROR: forged?[31m??]");
    EXPECT_EQ(ul::formatError(std::runtime_error("a\r\nb")), "a??b");
}

} // namespace sarn_test
