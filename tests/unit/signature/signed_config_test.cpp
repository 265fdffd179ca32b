// SPDX-License-Identifier: Apache-2.0
#include "support/signing.h"

#include "sarn/signed_config.h"

namespace sarn_test {

namespace {

using sarn::CSignedConfig;

static_assert(std::is_copy_constructible_v<CSignedConfig> && std::is_copy_assignable_v<CSignedConfig>);
static_assert(std::is_base_of_v<ul::CError, sarn::CSignedConfigSignatureError>);

constexpr char sample[] = "top=0\n"
                          "[a]\nb=1\nb/c=2\n"
                          "[net]\nport=80\nportal=x\nhost=h\n"
                          "[net/port2]\nx=3\n";

using Names = std::vector<std::string>;

ul::P<CSignedConfig> load(const ul::CWindowsPath& path, bool base64Encoded = false) {
    return ul::make<CSignedConfig>(path, readPublicKey("rsa2048"), base64Encoded);
}

Names list(const CSignedConfig& config, const char* prefix) {
    ul::TArray<ul::String> names;
    config.getValueNamesWithPrefix(names, prefix);
    Names result;
    for (const ul::String& name : names)
        result.push_back(name.toUTF8());
    return result;
}

void expectValues(CSignedConfig& config, std::initializer_list<std::pair<const char*, const char*>> values) {
    for (const auto& [key, value] : values)
        EXPECT_EQ(config.getValue(key), value) << key;
}

struct SignedConfig : testing::Test {
    /// Writes a configuration and its signature file.
    ul::CWindowsPath write(const std::string& content, const std::string& name = "a.ini") const {
        const ul::CWindowsPath path = m_folder.write(name, content);
        writeSignatureFile(path);
        return path;
    }

    void expectBadSignature(bool base64Encoded = false) const {
        const ul::CWindowsPath path = m_folder.getPath("a.ini");
        expectError<sarn::CSignedConfigSignatureError>("Invalid signature for config file.",
                                                       {"path", path.getString().toUTF8()},
                                                       [&] { load(path, base64Encoded); });
    }

    const TempFolder m_folder;
};

struct ConfigAccess : sarn::CSignedConfig {
    using sarn::CSignedConfig::splitKey;
};

} // namespace

TEST(SignedConfigKeys, SplitKey_TakesOneLeadingSlashAndSplitsAtTheNext) {
    const char* const keys[][3] = {{"/a/b", "a", "b"}, {"a/b", "a", "b"}, {"/a/b/c", "a", "b/c"}, {"b", "/", "b"},
                                   {"/b", "/", "b"},   {"//b", "", "b"},  {"a/", "a", ""},        {"", "/", ""},
                                   {"/", "/", ""},     {"///b", "", "/b"}};
    for (const auto& [key, expectedSection, expectedName] : keys) {
        ul::String section;
        ul::String name;
        ConfigAccess::splitKey(key, section, name);
        EXPECT_EQ(section, expectedSection) << key;
        EXPECT_EQ(name, expectedName) << key;
    }
}

TEST_F(SignedConfig, Keys_ReadTheirValuesWithAndWithoutTheFirstSlash) {
    // The third is the value named b/c of section a.
    expectValues(*load(write(sample)), {{"/a/b", "1"}, {"a/b", "1"}, {"/a/b/c", "2"}, {"/net/port", "80"}});
}

TEST_F(SignedConfig, KeyWithoutSection_ReadsTheSectionNamedSlashAndValuesBeforeAllSections) {
    const ul::P<CSignedConfig> config = load(write("b=ahead\n[/]\nc=in slash\n"));
    expectValues(*config, {{"c", "in slash"}, {"/c", "in slash"}, {"b", "ahead"}, {"//b", "ahead"}});
    config->setValueNonPersistent("b", "set");
    // The section named slash comes first.
    expectValues(*config, {{"b", "set"}, {"//b", "ahead"}});
    EXPECT_EQ(list(*config, ""), (Names{"//b", "///c", "///b"}));
}

TEST_F(SignedConfig, MissingValue_IsAnErrorThatNamesTheKeyOrFalse) {
    const ul::P<CSignedConfig> config = load(write(sample));
    expectError("Required config value '/no/such' not found.", [&] { config->getValue("/no/such"); });
    expectError("Required config value 'such' not found.", [&] { config->getValue("such"); });
    ul::String value("old");
    EXPECT_FALSE(config->getValue("/no/such", value));
    EXPECT_EQ(value, "old");
    EXPECT_TRUE(config->getValue("/a/b", value));
    EXPECT_EQ(value, "1");
}

TEST_F(SignedConfig, GetValueNamesWithPrefix_AppendsFullKeysInTheOrderOfTheFile) {
    const ul::P<CSignedConfig> config = load(write(sample));
    const Names all{"//top", "/a/b", "/a/b/c", "/net/port", "/net/portal", "/net/host", "/net/port2/x"};
    EXPECT_EQ(list(*config, ""), all);
    EXPECT_EQ(list(*config, "/"), all);
    EXPECT_EQ(list(*config, "/net/"), (Names{"/net/port", "/net/portal", "/net/host", "/net/port2/x"}));
    EXPECT_EQ(list(*config, "/net/port"), (Names{"/net/port", "/net/portal", "/net/port2/x"}));
    EXPECT_EQ(list(*config, "a/"), Names());
    ul::TArray<ul::String> twice;
    config->getValueNamesWithPrefix(twice, "");
    config->getValueNamesWithPrefix(twice, "");
    EXPECT_EQ(twice.getSize(), 14) << "the array is not cleared";
    ul::TArray<ul::String> own;
    own.append("/");
    config->getValueNamesWithPrefix(own, own[0]);
    EXPECT_EQ(own.getSize(), 8) << "the prefix may be one of the names";
}

TEST_F(SignedConfig, SetValueNonPersistent_ChangesMemoryOnly_WhichCopiesShare) {
    const ul::CWindowsPath path = write(sample);
    const ul::P<CSignedConfig> config = load(path);
    const ul::P<CSignedConfig> copy = ul::make<CSignedConfig>(*config);
    config->setValueNonPersistent("/a/new", "x");
    config->setValueNonPersistent("a/b", "changed");
    for (const ul::P<CSignedConfig>& each : {config, copy})
        expectValues(*each, {{"/a/new", "x"}, {"/a/b", "changed"}});
    EXPECT_EQ(list(*config, "/a/"), (Names{"/a/b", "/a/b/c", "/a/new"}));
    ul::String value;
    EXPECT_FALSE(load(path)->getValue("/a/new", value));
    EXPECT_EQ(m_folder.read("a.ini"), sample);
}

TEST_F(SignedConfig, MissingSignatureOrConfigurationFile_IsAFileErrorThatNamesIt) {
    const ul::CWindowsPath path = write(sample);
    for (const char* const name : {"a.ini", "a.ini.sig"}) {
        std::filesystem::remove(m_folder.getNative(name));
        EXPECT_EQ(getProp(*catchError<ul::CFileError>([&] { load(path); }), "path"),
                  m_folder.getPath(name).getString().toUTF8());
    }
}

TEST_F(SignedConfig, ChangedConfiguration_IsRefusedBeforeItIsParsed) {
    const std::string added = std::string(sample) + "[evil]\nx=1\n";
    const std::string changed = "top=1" + std::string(sample).substr(5);
    for (const bool base64Encoded : {false, true}) {
        write(base64Encoded ? toBase64(sample) : sample);
        for (const std::string& content : {added, changed, toBase64(added), std::string("[a\n"), std::string("x\n"),
                                           std::string("[a]\nx=\xFF\n"), std::string()}) {
            m_folder.write("a.ini", content);
            expectBadSignature(base64Encoded);
        }
    }
}

TEST_F(SignedConfig, WrongMissingOrPartialSignature_IsRefused) {
    const ul::CWindowsPath path = write(sample);
    const std::string own = m_folder.read("a.ini.sig");
    writeSignatureFile(path, "rsa3072");
    const std::string ofAnotherKey = m_folder.read("a.ini.sig");
    write("other=1\n", "b.ini");
    for (const std::string& signature : {ofAnotherKey, m_folder.read("b.ini.sig"), std::string(), own.substr(0, 128)}) {
        m_folder.write("a.ini.sig", signature);
        expectBadSignature();
    }
    m_folder.write("a.ini.sig", own);
    EXPECT_TRUE(load(path));
}

TEST_F(SignedConfig, MalformedPublicKeyOrSignatureFile_PassesThatErrorOn) {
    const ul::CWindowsPath path = write(sample);
    expectError("OpenSSL key corrupted.", [&] { CSignedConfig(path, "not a key", false); });
    expectError("OpenSSL key corrupted.", [&] { CSignedConfig(path, readKey("rsa2048"), false); });
    m_folder.write("a.ini.sig", "not a signature");
    expectInvalidArg("base64Decode", "invalid base64 data", [&] { load(path); });
}

TEST_F(SignedConfig, ConfigurationThatIsNotINI_PassesThatErrorOnWithThePath) {
    for (const bool base64Encoded : {false, true}) {
        const ul::CWindowsPath path = write(base64Encoded ? toBase64("[a\n") : "[a\n");
        expectError("Invalid INI text in line 1: the section header has no ']'.",
                    {"line", "1", "path", path.getString().toUTF8()}, [&] { load(path, base64Encoded); });
    }
}

TEST_F(SignedConfig, Base64ConfigurationThatIsNotText_PassesThatErrorOnWithThePath) {
    const ul::CWindowsPath path = write("\xFF");
    expectError("Invalid UTF-8 text.", {"position", "0", "path", path.getString().toUTF8()}, [&] { load(path, true); });
    write("\xEF\xBB\xBF" + toBase64(sample));
    expectInvalidArg("base64Decode", "invalid base64 data", [&] { load(path, true); });
}

TEST_F(SignedConfig, Base64Configuration_IsSignedInItsEncodedForm) {
    for (const bool lineBreaks : {false, true})
        expectValues(*load(write(toBase64(sample, lineBreaks)), true), {{"/net/port", "80"}});
    EXPECT_EQ(list(*load(write(""), true), ""), Names());
}

TEST_F(SignedConfig, ConfigurationReadInTheOtherForm_PassesTheSignatureButNotDecodingOrParsing) {
    const ul::CWindowsPath path = write(sample);
    expectInvalidArg("base64Decode", "invalid base64 data", [&] { load(path, true); });
    write(toBase64("[a]\nb=12\n"));
    expectErrorOf<ul::CError>("Invalid INI text in line 1: it is no comment, no section header and has no '='.",
                              [&] { load(path, false); });
}

TEST_F(SignedConfig, LongAndForeignNames_AreAccepted) {
    for (const std::string& name :
         {std::string(240, 'n'), std::string("donn\xC3\xA9-.ini"), std::string("\xF0\x9F\x98\x80.ini")})
        expectValues(*load(write(sample, name)), {{"/a/b", "1"}});
}

TEST_F(SignedConfig, FileChangedAfterLoading_IsNotNoticed) {
    const ul::CWindowsPath path = write(sample);
    const ul::P<CSignedConfig> config = load(path);
    m_folder.write("a.ini", "[a]\nb=changed\n");
    expectValues(*config, {{"/a/b", "1"}});
}

TEST_F(SignedConfig, SignatureError_KeepsItsTypeWhenItIsStored) {
    const ul::P<ul::CError> held = sarn::CSignedConfigSignatureError(m_folder.getPath("a.ini")).clone();
    EXPECT_THROW(held->throwClone(), sarn::CSignedConfigSignatureError);
}

} // namespace sarn_test
