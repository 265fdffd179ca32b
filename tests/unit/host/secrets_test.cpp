// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/key_files.h"
#include "support/temp_folder.h"

#include "sarn/host.h"

#include <new>
#include <string_view>

namespace sarn_test {

static_assert(!std::is_copy_constructible_v<ul::CSecretText>);

TEST(ReadSecretTextFile, OfUTF8_IsTheTextThatTheDocumentedOperationReads_WithoutTheByteOrderMark) {
    const TempFolder folder;
    const std::string key = readKey("rsa2048").toUTF8();
    for (const std::string& content : {key, std::string("\xEF\xBB\xBFkey\r\n"), std::string("\xEF\xBB\xBF"),
                                       std::string(), std::string("\xC3\xA4")}) {
        const ul::CWindowsPath path = folder.write("file", content);
        EXPECT_EQ(ul::readSecretTextFile(path).get(), ul::readUTF8TextFile(path));
    }
}

TEST(ReadSecretTextFile, OfTextThatIsNotUTF8_NamesTheFile) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("file", "a\xE4");
    expectError("Invalid UTF-8 text.", {"position", "1", "path", path.getString().toUTF8()},
                [&] { ul::readSecretTextFile(path); });
    EXPECT_THROW(ul::readSecretTextFile(folder.getPath("none")), ul::CFileError);
}

TEST(ReadSecretFile, OfAnySize_IsItsBytes) {
    const TempFolder folder;
    for (const int size : {0, 1, 4095, 4096, 4097, 100000}) {
        const ul::CWindowsPath path = folder.write("file", makeText(size));
        EXPECT_EQ(toBytes(ul::readSecretFile(path)), makePattern(size));
    }
}

TEST(ReadSecretLine, OfAFile_IsItsFirstLineWithoutTheLineEnd) {
    const TempFolder folder;
    // clang-format off
    const std::pair<const char*, const char*> cases[] = {
        {"", ""}, {"\n", ""}, {"a b", "a b"}, {"a b\n", "a b"}, {"a\r\n", "a"}, {" a \t\nb", " a \t"},
        {"\xEF\xBB\xBF\xC3\xA4\n", "\xC3\xA4"},
        {"!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~\t\n", "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~\t"}};
    // clang-format on
    for (const auto& [content, line] : cases)
        EXPECT_EQ(ul::readSecretLine(folder.write("file", content)).get().toUTF8(), line);
}

TEST(CSecretText, AfterAMove_IsEmptyAndTheOtherHasTheText) {
    for (const char* const text : {"abc", "a text that is too long to lie in the string itself"}) {
        ul::CSecretText first(text);
        const ul::CSecretText second(std::move(first));
        EXPECT_EQ(second.get().toUTF8(), text);
        EXPECT_TRUE(first.get().isEmpty()); // NOLINT(bugprone-use-after-move): its contract says so
        EXPECT_TRUE(ul::CBytes(second.toUTF8()) == text);
    }
}

TEST(CSecretText, ShortText_IsWipedWithinTheObject_AlsoByAMove) {
    const std::wstring_view end = L"yz"; // the beginning is overwritten in any case
    const ul::CBytes bytes(end.data(), end.size() * sizeof(wchar_t));
    for (const bool isMoved : {false, true}) {
        alignas(ul::CSecretText) unsigned char memory[sizeof(ul::CSecretText)] = {};
        const auto isThere = [&] {
            return std::search(memory, std::end(memory), bytes.begin(), bytes.end()) != std::end(memory);
        };
        auto* const text = new (memory) ul::CSecretText("xyz");
        EXPECT_TRUE(isThere());
        if (isMoved) {
            const ul::CSecretText other(std::move(*text));
            EXPECT_FALSE(isThere());
        }
        text->~CSecretText();
        EXPECT_FALSE(isThere());
    }
}

TEST(CheckPassPhrase, OfLatin1_IsThePassPhrase_AndOfAnyOtherOrANullCharacter_IsRefused) {
    const ul::String latin1 = L"all of \u00E4\u00FF\u0001";
    EXPECT_TRUE(sarn::checkPassPhrase(latin1) == latin1);
    EXPECT_TRUE(sarn::checkPassPhrase("").isEmpty());
    for (const wchar_t* const text : {L"\u0100", L"Latin \u20AC", L"\uFFFF"})
        expectInvalidArg("checkPassPhrase", "pass phrase has a character outside Latin-1",
                         [&] { sarn::checkPassPhrase(text); });
    expectInvalidArg("checkPassPhrase", "pass phrase has a null character", [] {
        sarn::checkPassPhrase(ul::text({"a\0b", 3}));
    });
}

TEST(SignFile, ByAnEncryptedKey_GivesTheSignatureOfTheDocumentedOperation) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("file", makeText(200000));
    for (const char* const name : {"rsa2048_encrypted_traditional", "rsa2048_encrypted_pkcs8"}) {
        const std::string keyPath = getTestDataFolder() + "/keys/" + name + "_for_tests_only.pem";
        const ul::CSecretText key = ul::readSecretTextFile(ul::path(keyPath));
        const auto signature = sarn::signFile(path, key, ul::CSecretText(testPassphrase));
        EXPECT_TRUE(sarn::verifyFileSignature_RSA_SHA1(path, readPublicKey("rsa2048"), signature));
    }
    Buffer documented;
    sarn::createFileSignature_RSA_SHA1(path, readKey("rsa2048"), documented);
    EXPECT_EQ(toBytes(sarn::signFile(path, readKey("rsa2048"), "")), toBytes(documented));
}

TEST(SignFile, WithAPassPhraseOutsideLatin1_RefusesItInsteadOfReportingACorruptedKey) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("file", "data");
    expectInvalidArg("checkPassPhrase", "pass phrase has a character outside Latin-1", [&] {
        sarn::signFile(path, readKey("rsa2048_encrypted_pkcs8"), ul::text("for tests \xE2\x82\xAC"));
    });
}

} // namespace sarn_test
