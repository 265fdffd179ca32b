// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/key_files.h"
#include "support/temp_folder.h"

#include "sarn/host.h"

#include <algorithm>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace sarn_test {

namespace {

ul::CWindowsPath getKeyPath(const std::string& name) {
    return ul::path(getTestDataFolder() + "/keys/" + name + "_for_tests_only.pem");
}

} // namespace

static_assert(!std::is_copy_constructible_v<ul::CSecretText>);

TEST(ReadSecretTextFile, OfAKey_IsWhatTheDocumentedOperationReads) {
    const ul::CWindowsPath path = getKeyPath("rsa2048");
    EXPECT_TRUE(ul::readSecretTextFile(path).get() == ul::readUTF8TextFile(path));
}

TEST(ReadSecretTextFile, WithAByteOrderMark_LeavesItOut) {
    const TempFolder folder;
    for (const char* const content : {"\xEF\xBB\xBFkey\r\n", "\xEF\xBB\xBF", "", "\xC3\xA4"}) {
        const ul::CWindowsPath path = folder.write("file", content);
        EXPECT_TRUE(ul::readSecretTextFile(path).get() == ul::readUTF8TextFile(path)) << content;
    }
}

TEST(ReadSecretTextFile, OfWhatIsNotUTF8_NamesTheFile) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("file", "a\xE4");
    const std::string name = path.getString().toUTF8();
    expectError("Invalid UTF-8 text.", {"position", "1", "path", name.c_str()}, [&] { ul::readSecretTextFile(path); });
    EXPECT_THROW(ul::readSecretTextFile(folder.getPath("none")), ul::CFileError);
}

TEST(ReadSecretFile, OfAnySize_IsItsBytes) {
    const TempFolder folder;
    for (const int size : {0, 1, 4095, 4096, 4097, 100000}) {
        const Bytes bytes = makePattern(size);
        const ul::CWindowsPath path = folder.write("file", std::string(bytes.begin(), bytes.end()));
        EXPECT_EQ(toBytes(ul::readSecretFile(path)), bytes);
    }
}

TEST(ReadSecretLine, OfAFile_IsItsFirstLineWithoutTheEnd) {
    const TempFolder folder;
    const std::pair<const char*, const char*> cases[] = {{"", ""},
                                                         {"\n", ""},
                                                         {"pass phrase", "pass phrase"},
                                                         {"pass phrase\n", "pass phrase"},
                                                         {"pass phrase\r\n", "pass phrase"},
                                                         {" a \t\nb", " a \t"},
                                                         {"\xEF\xBB\xBF\xC3\xA4\n", "\xC3\xA4"}};
    for (const auto& [content, line] : cases)
        EXPECT_EQ(ul::readSecretLine(folder.write("file", content)).get().toUTF8(), line);
}

TEST(CSecretText, AfterAMove_IsEmptyAndTheOtherHasTheText) {
    for (const char* const text : {"abc", "a text that is too long to lie in the string itself"}) {
        ul::CSecretText first(text);
        const ul::CSecretText second(std::move(first));
        EXPECT_EQ(second.get().toUTF8(), text);
        EXPECT_TRUE(first.get().isEmpty()); // NOLINT(bugprone-use-after-move): it is said to be so
        const ul::TCryptBuffer<char> utf8 = second.toUTF8();
        EXPECT_EQ(ul::CBytes(utf8).asText(), text);
    }
}

TEST(CSecretText, ShortText_IsWipedInTheObjectItself) {
    // Short texts lie in the object, where no operator delete sees them.
    alignas(ul::CSecretText) unsigned char memory[sizeof(ul::CSecretText)] = {};
    auto* const text = new (memory) ul::CSecretText("xyz");
    const wchar_t wide[] = L"xyz";
    const auto* const begin = reinterpret_cast<const unsigned char*>(wide);
    const auto isThere = [&] {
        return std::search(memory, memory + sizeof memory, begin, begin + 3 * sizeof(wchar_t)) !=
               memory + sizeof memory;
    };
    EXPECT_TRUE(isThere());
    text->~CSecretText();
    EXPECT_FALSE(isThere());
}

TEST(CheckPassPhrase, OfLatin1_IsThePassPhrase) {
    const ul::String latin1 = L"all of \u00E4\u00FF\u0001";
    EXPECT_TRUE(sarn::checkPassPhrase(latin1) == latin1);
    EXPECT_TRUE(sarn::checkPassPhrase("").isEmpty());
}

TEST(CheckPassPhrase, OutsideLatin1_SaysSo) {
    for (const wchar_t* const text : {L"\u0100", L"Latin \u20AC", L"\uFFFF"})
        expectInvalidArg("checkPassPhrase", "pass phrase has a character outside Latin-1",
                         [&] { sarn::checkPassPhrase(text); });
    expectInvalidArg("checkPassPhrase", "pass phrase has a null character", [] {
        sarn::checkPassPhrase(ul::text({"a\0b", 3}));
    });
}

TEST(SignFile, ByAnEncryptedKey_GivesTheSignatureOfTheDocumentedOperation) {
    const TempFolder folder;
    const Bytes bytes = makePattern(200000);
    const ul::CWindowsPath path = folder.write("file", std::string(bytes.begin(), bytes.end()));
    for (const char* const name : {"rsa2048_encrypted_traditional", "rsa2048_encrypted_pkcs8"}) {
        const ul::CSecretText key = ul::readSecretTextFile(getKeyPath(name));
        const auto signature = sarn::signFile(path, key, ul::CSecretText(testPassphrase));
        EXPECT_TRUE(sarn::verifyFileSignature_RSA_SHA1(path, readPublicKey("rsa2048"), signature));
    }
    ul::TBuffer<unsigned char> documented;
    sarn::createFileSignature_RSA_SHA1(path, readKey("rsa2048"), documented);
    EXPECT_EQ(toBytes(sarn::signFile(path, readKey("rsa2048"), "")), toBytes(documented));
}

TEST(SignFile, WithAPassPhraseOutsideLatin1_SaysSoInsteadOfCallingTheKeyCorrupted) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("file", "data");
    expectInvalidArg("checkPassPhrase", "pass phrase has a character outside Latin-1", [&] {
        sarn::signFile(path, readKey("rsa2048_encrypted_pkcs8"), ul::text("for tests \xE2\x82\xAC"));
    });
}

} // namespace sarn_test
