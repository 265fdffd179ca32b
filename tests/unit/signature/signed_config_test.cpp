// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/key_files.h"
#include "support/temp_folder.h"
#include "support/vectors.h"

#include "sarn/encoding.h"
#include "sarn/signature.h"
#include "sarn/signed_config.h"

#include "ul/file.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace sarn_test {

namespace {

using sarn::CSignedConfig;

static_assert(std::is_copy_constructible_v<CSignedConfig> && std::is_copy_assignable_v<CSignedConfig>);
static_assert(std::is_base_of_v<ul::CError, sarn::CSignedConfigSignatureError>);

constexpr char sample[] = "top=0\n"
                          "[a]\nb=1\nb/c=2\n"
                          "[net]\nport=80\nportal=x\nhost=h\n"
                          "[net/port2]\nx=3\n";

/// A folder with a signed configuration in it.
class SignedConfig : public testing::Test {
protected:
    /// Writes a configuration and its signature file.
    ul::CWindowsPath write(const std::string& content, const std::string& name = "a.ini") const {
        const ul::CWindowsPath path = m_folder.write(name, content);
        ul::TBuffer<unsigned char> signature;
        sarn::createFileSignature_RSA_SHA1(path, readKey("rsa2048"), signature);
        sarn::storeSignatureBase64(m_folder.getPath(name + ".sig"), signature);
        return path;
    }

    static ul::P<CSignedConfig> load(const ul::CWindowsPath& path, bool base64Encoded = false) {
        return ul::make<CSignedConfig>(path, readPublicKey("rsa2048"), base64Encoded);
    }

    static std::vector<std::string> list(const CSignedConfig& config, const char* prefix) {
        ul::TArray<ul::String> names;
        config.getValueNamesWithPrefix(names, prefix);
        std::vector<std::string> result;
        for (const ul::String& name : names)
            result.push_back(name.toUTF8());
        return result;
    }

    static std::string toBase64(const std::string& text, bool lineBreaks) {
        return sarn::base64Encode(text.data(), static_cast<int>(text.size()), true, lineBreaks).toLatin1();
    }

    static void expectBadSignature(const ul::CWindowsPath& path, bool base64Encoded = false) {
        const ul::P<ul::CError> error =
            catchError<sarn::CSignedConfigSignatureError>([&] { load(path, base64Encoded); });
        ASSERT_TRUE(error);
        EXPECT_STREQ(error->what(), "Invalid signature for config file.");
        EXPECT_TRUE(error->getText().isEmpty());
        EXPECT_EQ(error->getCode(), -1);
        EXPECT_EQ(error->getCause(), nullptr);
        ASSERT_EQ(error->getProps().getCount(), 1);
        EXPECT_TRUE(error->getProps().getName(0) == "path");
        EXPECT_EQ(error->getProps().getValue(0), path.getString());
    }

    const TempFolder m_folder;
};

} // namespace

TEST_F(SignedConfig, Keys_ReadTheirValuesWithAndWithoutTheFirstSlash) {
    const ul::P<CSignedConfig> config = load(write(sample));
    EXPECT_TRUE(config->getValue("/a/b") == "1");
    EXPECT_TRUE(config->getValue("a/b") == "1");
    EXPECT_TRUE(config->getValue("/a/b/c") == "2") << "the value named b/c of section a";
    EXPECT_TRUE(config->getValue("/net/port") == "80");
}

TEST_F(SignedConfig, KeyWithoutSection_ReadsTheSectionNamedSlashAndValuesAheadOfAll) {
    const ul::P<CSignedConfig> config = load(write("b=ahead\n[/]\nc=in slash\n"));
    EXPECT_TRUE(config->getValue("c") == "in slash");
    EXPECT_TRUE(config->getValue("/c") == "in slash");
    EXPECT_TRUE(config->getValue("b") == "ahead");
    EXPECT_TRUE(config->getValue("//b") == "ahead");
    config->setValueNonPersistent("b", "set");
    EXPECT_TRUE(config->getValue("b") == "set") << "the section named slash comes first";
    EXPECT_TRUE(config->getValue("//b") == "ahead");
    EXPECT_EQ(list(*config, ""), (std::vector<std::string>{"//b", "///c", "///b"}));
}

TEST_F(SignedConfig, MissingValue_IsAnErrorThatNamesTheKeyOrFalse) {
    const ul::P<CSignedConfig> config = load(write(sample));
    expectError("Required config value '/no/such' not found.", [&] { config->getValue("/no/such"); });
    expectError("Required config value 'such' not found.", [&] { config->getValue("such"); });
    ul::String value("old");
    EXPECT_FALSE(config->getValue("/no/such", value));
    EXPECT_TRUE(value == "old");
    EXPECT_TRUE(config->getValue("/a/b", value));
    EXPECT_TRUE(value == "1");
}

TEST_F(SignedConfig, GetValueNamesWithPrefix_AppendsFullKeysInTheOrderOfTheFile) {
    const ul::P<CSignedConfig> config = load(write(sample));
    const std::vector<std::string> all{"//top",       "/a/b",      "/a/b/c",      "/net/port",
                                       "/net/portal", "/net/host", "/net/port2/x"};
    EXPECT_EQ(list(*config, ""), all);
    EXPECT_EQ(list(*config, "/"), all);
    EXPECT_EQ(list(*config, "/net/"),
              (std::vector<std::string>{"/net/port", "/net/portal", "/net/host", "/net/port2/x"}));
    EXPECT_EQ(list(*config, "/net/port"), (std::vector<std::string>{"/net/port", "/net/portal", "/net/port2/x"}));
    EXPECT_EQ(list(*config, "a/"), std::vector<std::string>());
    ul::TArray<ul::String> twice;
    config->getValueNamesWithPrefix(twice, "");
    config->getValueNamesWithPrefix(twice, "");
    EXPECT_EQ(twice.getSize(), 14) << "the array is not cleared";
}

TEST_F(SignedConfig, SetValueNonPersistent_ChangesMemoryOnly) {
    const ul::CWindowsPath path = write(sample);
    const ul::P<CSignedConfig> config = load(path);
    config->setValueNonPersistent("/a/new", "x");
    config->setValueNonPersistent("a/b", "changed");
    EXPECT_TRUE(config->getValue("/a/new") == "x" && config->getValue("/a/b") == "changed");
    EXPECT_EQ(list(*config, "/a/"), (std::vector<std::string>{"/a/b", "/a/b/c", "/a/new"}));
    ul::String value;
    EXPECT_FALSE(load(path)->getValue("/a/new", value));
    EXPECT_EQ(m_folder.read("a.ini"), sample);
}

TEST_F(SignedConfig, Copies_ShareTheirContent) {
    const ul::P<CSignedConfig> config = load(write(sample));
    const ul::P<CSignedConfig> copy = ul::make<CSignedConfig>(*config);
    config->setValueNonPersistent("/a/new", "x");
    EXPECT_TRUE(copy->getValue("/a/new") == "x");
}

TEST_F(SignedConfig, MissingSignatureFile_IsAFileError) {
    const ul::CWindowsPath path = m_folder.write("a.ini", sample);
    const ul::P<ul::CError> error = catchError<ul::CFileError>([&] { load(path); });
    ASSERT_TRUE(error);
    ul::String missing;
    EXPECT_TRUE(error->getProps().tryGet("path", missing));
    EXPECT_EQ(missing, m_folder.getPath("a.ini.sig").getString());
}

TEST_F(SignedConfig, MissingConfigurationFile_IsAFileError) {
    const ul::CWindowsPath path = write(sample);
    std::filesystem::remove(m_folder.getNative("a.ini"));
    EXPECT_THROW(load(path), ul::CFileError);
}

TEST_F(SignedConfig, ChangedConfiguration_IsRefused) {
    const ul::CWindowsPath path = write(sample);
    m_folder.write("a.ini", std::string(sample) + "[evil]\nx=1\n");
    expectBadSignature(path);
    std::string changed = sample;
    changed[4] = '1';
    m_folder.write("a.ini", changed);
    expectBadSignature(path);
}

TEST_F(SignedConfig, ChangedConfigurationThatIsNoINI_IsRefusedBeforeItIsParsed) {
    for (const bool base64Encoded : {false, true}) {
        const ul::CWindowsPath path = write(base64Encoded ? toBase64(sample, true) : sample);
        for (const char* const content : {"[a\n", "x\n", "[a]\nx=\xFF\n", ""}) {
            m_folder.write("a.ini", content);
            expectBadSignature(path, base64Encoded);
        }
    }
}

TEST_F(SignedConfig, SignatureOfAnotherKeyOrFile_IsRefused) {
    const ul::CWindowsPath path = write(sample);
    const std::string own = m_folder.read("a.ini.sig");
    write("other=1\n", "b.ini");
    m_folder.write("a.ini.sig", m_folder.read("b.ini.sig"));
    expectBadSignature(path);
    ul::TBuffer<unsigned char> signature;
    sarn::createFileSignature_RSA_SHA1(path, readKey("rsa3072"), signature);
    sarn::storeSignatureBase64(m_folder.getPath("a.ini.sig"), signature);
    expectBadSignature(path);
    m_folder.write("a.ini.sig", own);
    EXPECT_TRUE(load(path));
}

TEST_F(SignedConfig, EmptyOrTruncatedSignature_IsRefused) {
    const ul::CWindowsPath path = write(sample);
    const std::string signature = m_folder.read("a.ini.sig");
    m_folder.write("a.ini.sig", "");
    expectBadSignature(path);
    m_folder.write("a.ini.sig", signature.substr(0, 128));
    expectBadSignature(path);
}

TEST_F(SignedConfig, SignatureFileInAnotherShape_IsTaken) {
    const ul::CWindowsPath path = write(sample);
    const std::string signature = m_folder.read("a.ini.sig");
    std::string crlf;
    std::string oneLine;
    for (const char character : signature) {
        crlf += character == '\n' ? std::string("\r\n") : std::string(1, character);
        if (character != '\n')
            oneLine += character;
    }
    m_folder.write("a.ini.sig", crlf);
    EXPECT_TRUE(load(path));
    m_folder.write("a.ini.sig", oneLine);
    EXPECT_TRUE(load(path));
}

TEST_F(SignedConfig, SignatureFileThatIsNoBase64_PassesThatErrorOn) {
    const ul::CWindowsPath path = write(sample);
    m_folder.write("a.ini.sig", "not a signature");
    expectInvalidArg("base64Decode", "invalid base64 data", [&] { load(path); });
}

TEST_F(SignedConfig, PublicKeyThatIsNone_PassesThatErrorOn) {
    const ul::CWindowsPath path = write(sample);
    expectError("OpenSSL key corrupted.", [&] { CSignedConfig(path, "no key", false); });
    expectError("OpenSSL key corrupted.", [&] { CSignedConfig(path, readKey("rsa2048"), false); });
}

TEST_F(SignedConfig, ConfigurationThatIsNoINI_PassesThatErrorOn) {
    const ul::CWindowsPath path = write("[a\n");
    expectError("Invalid INI text in line 1: the section header has no ']'.",
                {"line", "1", "path", path.getString().toUTF8().c_str()}, [&] { load(path); });
}

TEST_F(SignedConfig, Base64ConfigurationThatIsNoINI_PassesThatErrorOnWithThePath) {
    const ul::CWindowsPath path = write(toBase64("[a\n", true));
    const std::string text = path.getString().toUTF8();
    expectError("Invalid INI text in line 1: the section header has no ']'.", {"line", "1", "path", text.c_str()},
                [&] { load(path, true); });
    write("\xFF");
    expectError("Invalid UTF-8 text.", {"position", "0", "path", text.c_str()}, [&] { load(path, true); });
    write("\xEF\xBB\xBF" + toBase64(sample, true));
    expectInvalidArg("base64Decode", "invalid base64 data", [&] { load(path, true); });
}

TEST_F(SignedConfig, Base64Configuration_IsSignedAsItLiesOnTheDisk) {
    for (const bool lineBreaks : {false, true}) {
        const ul::P<CSignedConfig> config = load(write(toBase64(sample, lineBreaks)), true);
        EXPECT_TRUE(config->getValue("/net/port") == "80");
    }
    EXPECT_EQ(list(*load(write(""), true), ""), std::vector<std::string>());
}

TEST_F(SignedConfig, PlainConfigurationTakenForBase64_PassesTheSignatureAndFailsInDecoding) {
    const ul::CWindowsPath path = write(sample);
    expectInvalidArg("base64Decode", "invalid base64 data", [&] { load(path, true); });
}

TEST_F(SignedConfig, Base64ConfigurationTakenForPlain_FailsInParsing) {
    const ul::CWindowsPath path = write(toBase64("[a]\nb=12\n", true));
    EXPECT_THROW(load(path, false), ul::CError);
}

TEST_F(SignedConfig, LongAndForeignNames_AreTaken) {
    for (const std::string& name : {std::string(240, 'n'),
                                    std::string("donn\xC3\xA9"
                                                "es.ini"),
                                    std::string("\xF0\x9F\x98\x80.ini")})
        EXPECT_TRUE(load(write(sample, name))->getValue("/a/b") == "1") << name;
}

TEST_F(SignedConfig, PathOf300Characters_IsTaken) {
    std::filesystem::path folder = m_folder.getNative();
    while (TempFolder::toPath(folder).getString().getLength() < 290)
        folder /= std::string(60, 'd');
#ifdef _WIN32
    std::filesystem::create_directories(L"\\\\?\\" + folder.native());
#else
    std::filesystem::create_directories(folder);
#endif
    const ul::CWindowsPath path = TempFolder::toPath(folder / "a.ini");
    ul::writeUTF8TextFile(path, sample);
    ul::TBuffer<unsigned char> signature;
    sarn::createFileSignature_RSA_SHA1(path, readKey("rsa2048"), signature);
    sarn::storeSignatureBase64(ul::CWindowsPath(path.getString() + ".sig"), signature);
    EXPECT_GE(path.getString().getLength(), 295);
    EXPECT_TRUE(load(path)->getValue("/a/b") == "1");
}

TEST_F(SignedConfig, FileChangedAfterLoading_IsNotNoticed) {
    const ul::CWindowsPath path = write(sample);
    const ul::P<CSignedConfig> config = load(path);
    m_folder.write("a.ini", "[a]\nb=changed\n");
    EXPECT_TRUE(config->getValue("/a/b") == "1");
}

TEST_F(SignedConfig, SignatureError_KeepsItsTypeWhenItIsStored) {
    const ul::P<ul::CError> held = sarn::CSignedConfigSignatureError(m_folder.getPath("a.ini")).clone();
    EXPECT_THROW(held->throwClone(), sarn::CSignedConfigSignatureError);
}

} // namespace sarn_test
