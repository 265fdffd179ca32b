// SPDX-License-Identifier: Apache-2.0
// A configuration that is exchanged right after it was verified, before it is opened again to be parsed.
#include "failures/call_watch.h"
#include "support/expect.h"
#include "support/key_files.h"
#include "support/temp_folder.h"

#include "sarn/encoding.h"
#include "sarn/signature.h"
#include "sarn/signed_config.h"

#include <gtest/gtest.h>

namespace sarn_test {

namespace {

constexpr char signedText[] = "[a]\nwho=host\n";
constexpr char otherText[] = "[a]\nwho=evil\n";

class ExchangedFile : public testing::TestWithParam<bool> {
protected:
    ExchangedFile() : m_file(m_folder.write("config", encode(signedText))) {
        ul::TBuffer<unsigned char> signature;
        sarn::createFileSignature_RSA_SHA1(m_file, readKey("rsa1024"), signature);
        sarn::storeSignatureBase64(m_folder.getPath("config.sig"), signature);
    }

    static std::string encode(const std::string& text) {
        return GetParam() ? sarn::base64Encode(text.data(), static_cast<int>(text.size()), true, true).toLatin1()
                          : text;
    }

    /// Loads the configuration, whose file gets another `content` right before it is opened for the second time.
    ul::P<sarn::CSignedConfig> loadExchanged(const std::string& content) {
        m_folder.write("config", encode(signedText));
        const std::string file = m_folder.getNative("config").string();
        m_openings = 0;
        CallWatch watch;
        watch.before("open", [&](const Call& call) {
            if (call.getPointer<char>(0) == file && ++m_openings == 2)
                m_folder.write("config", content);
        });
        return ul::make<sarn::CSignedConfig>(m_file, readPublicKey("rsa1024"), GetParam());
    }

    const TempFolder m_folder;
    ul::CWindowsPath m_file;
    int m_openings = 0;
};

} // namespace

TEST_P(ExchangedFile, BetweenTheTwoOpenings_IsASignatureError) {
    for (const std::string& content :
         {encode(otherText), encode(signedText) + "\n", std::string("[a\n"), std::string()}) {
        const ul::P<ul::CError> error = catchError<sarn::CSignedConfigSignatureError>([&] { loadExchanged(content); });
        ASSERT_TRUE(error) << content;
        EXPECT_STREQ(error->what(), "Invalid signature for config file.");
        EXPECT_EQ(m_openings, 2) << "it is opened once to be verified and once to be parsed";
    }
}

TEST_P(ExchangedFile, ForASignedOneBetweenTheTwoOpenings_IsRead) {
    EXPECT_EQ(loadExchanged(encode(signedText))->getValue("/a/who"), "host");
    EXPECT_EQ(m_openings, 2);
}

INSTANTIATE_TEST_SUITE_P(PlainAndBase64, ExchangedFile, testing::Bool());

} // namespace sarn_test
