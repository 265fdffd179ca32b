// SPDX-License-Identifier: Apache-2.0
// Files that are exchanged after they were verified and before they are opened again to be parsed, and files whose size
// is not the one that the system reports.
#include "failures/call_watch.h"
#include "failures/signed_file.h"

#include "ul/file.h"

#include <climits>

#include <sys/stat.h>

namespace sarn_test {

namespace {

constexpr char signedText[] = "[a]\nwho=host\n";

class ExchangedFile : public testing::TestWithParam<bool> {
protected:
    static std::string encodeIfNeeded(const char* text) { return GetParam() ? toBase64(text) : text; }

    /// Loads the configuration. Its file gets another `content` before it is opened for the second time.
    ul::P<sarn::CSignedConfig> loadExchanged(const std::string& content) const {
        m_file.folder.write("file", encodeIfNeeded(signedText));
        const std::string native = m_file.folder.getNative("file").string();
        int openings = 0;
        CallWatch watch;
        watch.before("open", [&](const Call& call) {
            if (call.getPointer<char>(0) == native && ++openings == 2)
                m_file.folder.write("file", content);
        });
        return m_file.readConfig(GetParam());
    }

    const SignedFile m_file{encodeIfNeeded(signedText)};
};

/// Files that seem larger than memory, or that grow and shrink while they are read.
class PretendedSizes : public testing::Test {
protected:
    /// Runs `action` while the system reports another size of the file than it has.
    template <class Action>
    void pretend(long long size, Action action) const {
        struct stat pretending {};
        ASSERT_EQ(::stat(m_file.folder.getNative("file").c_str(), &pretending), 0);
        CallWatch watch;
        watch.after("fstat", [size, number = pretending.st_ino](const Call& call) {
            auto* const status = call.getPointer<struct stat>(1);
            if (status->st_ino == number)
                status->st_size = size;
        });
        action();
    }

    template <class Read>
    void expectTooLarge(long long size, Read read) const {
        const std::string message =
            "Cannot read file '" + m_file.path.getString().toUTF8() + "': it is too large to be held in memory.";
        pretend(size, [&] {
            const ul::P<ul::CError> error = catchError<ul::CFileError>(read);
            ASSERT_TRUE(error);
            EXPECT_EQ(error->what(), message);
            EXPECT_EQ(error->getCode(), -1);
        });
    }

    const SignedFile m_file{toBase64(signedText)};
};

} // namespace

TEST_P(ExchangedFile, BetweenTheTwoOpenings_IsASignatureError) {
    for (const std::string& content : {encodeIfNeeded("[a]\nwho=evil\n"), encodeIfNeeded(signedText) + "\n",
                                       std::string("[a\n"), std::string("\xFF"), std::string()})
        expectErrorOf<sarn::CSignedConfigSignatureError>("Invalid signature for config file.",
                                                         [&] { loadExchanged(content); });
}

TEST_P(ExchangedFile, ForASignedOneBetweenTheTwoOpenings_IsRead) {
    EXPECT_EQ(loadExchanged(encodeIfNeeded(signedText))->getValue("/a/who"), "host");
}

INSTANTIATE_TEST_SUITE_P(PlainAndBase64, ExchangedFile, testing::Bool());

TEST_F(PretendedSizes, FileLargerThanAnInt_IsAFileErrorWithThatReason) {
    for (const long long size : {1LL + INT_MAX, INT_MAX - 65535LL})
        expectTooLarge(size, [&] { ul::readUTF8TextFile(m_file.path); });
    expectTooLarge(1LL + INT_MAX, [&] { m_file.readConfig(true); });
}

TEST_F(PretendedSizes, TextFileWhoseSizeIsAboveTheLimit_IsRefusedBeforeItIsRead) {
    pretend(1001, [&] {
        EXPECT_THROW(ul::readUTF8TextFile(m_file.path, 1000), ul::CFileError);
        EXPECT_NO_THROW(ul::readUTF8TextFile(m_file.path, 1001));
    });
}

TEST_F(PretendedSizes, TextFileThatIsShorterThanItsSize_IsReadToItsEnd) {
    const ul::String text = ul::readUTF8TextFile(m_file.path);
    for (const long long size : {0LL, 1LL, 1000LL, INT_MAX - 65536LL})
        pretend(size, [&] { EXPECT_EQ(ul::readUTF8TextFile(m_file.path), text) << size; });
}

TEST_F(PretendedSizes, ConfigurationCutAfterItWasVerified_IsAnError) {
    for (const long long size : {1000LL, 1LL * INT_MAX})
        pretend(size,
                [&] { expectErrorOf<ul::CError>("Unexpected end of stream.", [&] { m_file.readConfig(true); }); });
}

TEST_F(PretendedSizes, SignedFileThatShrinksOrGrows_IsSignedAsItIsRead) {
    for (const long long size : {0LL, 5LL, 1LL << 40}) {
        pretend(size, [&] {
            EXPECT_TRUE(sarn::verifyFileSignature_RSA_SHA1(m_file.path, m_file.publicKey, m_file.signature)) << size;
        });
    }
}

} // namespace sarn_test
