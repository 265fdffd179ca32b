// SPDX-License-Identifier: Apache-2.0
// Texts, paths, errors and configuration values as hosts use them.
#include "support/signing.h"

#include "sarn/host.h"

#include <algorithm>
#include <fstream>
#include <limits>

namespace sarn_test {

namespace {

struct ConfigValues : testing::Test {
    sarn::CSignedConfig makeConfig(const std::string& text) const {
        const ul::CWindowsPath path = folder.write("a.ini", text);
        writeSignatureFile(path);
        return sarn::CSignedConfig(path, readPublicKey("rsa2048"), false);
    }

    const TempFolder folder;
};

} // namespace

constexpr char umlautInUTF8[] = "\xC3\xA4";
constexpr char faceInUTF8[] = "\xF0\x9F\x98\x80";

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
    std::vector<std::string> names = {"plain", "with space", "nul.txt.d", umlautInUTF8, faceInUTF8, ".hidden"};
#ifndef _WIN32
    names.insert(names.end(), {"a:b", "dot.", "dots...", "space ", "...", " ", "NUL"});
#endif
    for (const std::string& name : names) {
        const ul::CWindowsPath path = ul::path(folder.getNative(name));
        ul::writeUTF8TextFile(path, ul::text(name));
        EXPECT_EQ(ul::readUTF8TextFile(path), ul::text(name));
        std::ifstream file(ul::native(path));
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), name);
        EXPECT_TRUE(ul::path(ul::native(path)) == path || ul::native(ul::path(ul::native(path))) == ul::native(path));
    }
    // Windows opens a device under some of these names, unless their path is verbatim.
    std::sort(names.begin(), names.end());
    EXPECT_EQ(folder.list(), names);
}

TEST(Path, OfARelativeNativePath_IsBelowTheWorkingDirectory) {
    EXPECT_EQ(ul::native(ul::path(std::filesystem::path("file"))).filename(), "file");
    EXPECT_TRUE(ul::path(std::filesystem::path("file")) == ul::path("file"));
    for (const std::filesystem::path folder : {"a/..", "."})
        EXPECT_TRUE(ul::path(folder / "file") == ul::path("file"));
    EXPECT_TRUE(ul::path(std::filesystem::path("folder/")) == ul::path("folder"));
    expectErrorOf<ul::CBadPathError>("Invalid path: ", [] { ul::path(std::filesystem::path()); });
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
    const ul::String ends = ul::String(L"a\0b", 3) + L"\x85\x9B\xA0\x2028\x2029";
    EXPECT_EQ(ul::formatError(ul::CError(ends, "", -1, ul::CProps(), nullptr)), "a?b?\?\xC2\xA0?\?");
    EXPECT_EQ(ul::formatError(std::runtime_error("\xC3\xA4\xC2\x9B")), "\xC3\xA4?");
    EXPECT_EQ(ul::formatError(std::runtime_error("\xE4")), "\xC3\xA4") << "Latin-1";
}

TEST(FormatError, OfManyCauses_NeedsNoStackForEach) {
    ul::P<ul::CError> error = ul::make<ul::CError>("a", "", -1, ul::CProps(), nullptr);
    for (int i = 1; i < 50000; ++i)
        error = ul::make<ul::CError>("a", "", -1, ul::CProps(), error.get());
    EXPECT_EQ(ul::formatError(*error).size(), 50000 + 49999 * std::strlen(" Caused by: "));
}

TEST_F(ConfigValues, OfAKey_AreTheValuesOfTheDocumentedOperation) {
    sarn::CSignedConfig config = makeConfig("top=1\n[a]\nb=text\n\xC3\xA4=\xE2\x82\xAC\nempty=\n");
    EXPECT_EQ(sarn::findValue(config, "/a/b").value().toUTF8(), config.getValue("/a/b").toUTF8());
    EXPECT_EQ(sarn::findValue(config, "/a/\xC3\xA4").value().toUTF8(), "\xE2\x82\xAC");
    EXPECT_TRUE(sarn::findValue(config, "/a/empty").value().isEmpty());
    EXPECT_FALSE(sarn::findValue(config, "/a/none"));
}

TEST_F(ConfigValues, WithADefault_AreTheDefaultIfTheKeyIsMissing) {
    const sarn::CSignedConfig config = makeConfig("[a]\nb=text\nempty=\n");
    EXPECT_EQ(sarn::valueOr(config, "/a/b", "other").toUTF8(), "text");
    EXPECT_EQ(sarn::valueOr(config, "/a/empty", "other").toUTF8(), "");
    EXPECT_EQ(sarn::valueOr(config, "/a/none", "\xC3\xA4").toUTF8(), "\xC3\xA4");
    EXPECT_EQ(sarn::valueOr(config, std::string("/a/none"), ul::text("x")).toUTF8(), "x");
}

TEST_F(ConfigValues, ThatAreNumbers_AreConverted) {
    const sarn::CSignedConfig config = makeConfig("[a]\nzero=0\nmost=2147483647\nleast=-2147483648\nbyte=255\n");
    EXPECT_EQ(sarn::valueOr(config, "/a/zero", 7), 0);
    EXPECT_EQ(sarn::valueOr(config, "/a/most", 7), std::numeric_limits<int>::max());
    EXPECT_EQ(sarn::valueOr(config, "/a/least", 7), std::numeric_limits<int>::min());
    EXPECT_EQ(sarn::valueOr(config, "/a/byte", std::uint8_t{7}), 255);
    EXPECT_EQ(sarn::valueOr(config, "/a/none", 7L), 7L);
}

TEST_F(ConfigValues, ThatAreNotNumbersOrDoNotFit_AreRefusedByName) {
    const sarn::CSignedConfig config =
        makeConfig("[a]\nv0=12abc\nv1=\nv2=2147483648\nv3=1.5\nv4=0x10\nv5=+1\nv6=1 2\nv7=\xD9\xA1\nv8=--1\nv9=1e3\n");
    for (int i = 0; i < 10; ++i) {
        const std::string key = "/a/v" + std::to_string(i);
        const std::string message = "Config value '" + key + "' is not a number that fits.";
        expectError(message.c_str(), {"value", sarn::findValue(config, key)->toUTF8()},
                    [&] { sarn::valueOr(config, key, 1); });
    }
    EXPECT_EQ(sarn::valueOr(config, "/a/v2", 1u), 2147483648u);
}

TEST_F(ConfigValues, ThatCannotBeEncoded_AreNotNumbers) {
    sarn::CSignedConfig config = makeConfig("");
    config.setValueNonPersistent("/a/b", L"1\xDC00");
    const ul::P<ul::CError> error = catchError<ul::CError>([&] { sarn::valueOr(config, "/a/b", 1); });
    ASSERT_TRUE(error);
    EXPECT_STREQ(error->what(), "Config value '/a/b' is not a number that fits.");
}

TEST_F(ConfigValues, Keys_InARangeBasedLoop_AreTheKeysOfTheDocumentedOperation) {
    const sarn::CSignedConfig config = makeConfig("top=1\n[a]\nb=2\nc=3\n[d]\ne=4\n");
    std::string all;
    for (const ul::String& key : sarn::getKeys(config))
        all += key.toUTF8() + ";";
    for (const ul::String& key : sarn::getKeys(config, "/a/"))
        all += key.toUTF8() + ";";
    EXPECT_EQ(all, "//top;/a/b;/a/c;/d/e;/a/b;/a/c;");
}

} // namespace sarn_test
