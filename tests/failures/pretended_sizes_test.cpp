// SPDX-License-Identifier: Apache-2.0
// Files whose size is not what the system told: larger than memory, or grown and cut meanwhile.
#include "failures/call_watch.h"
#include "support/expect.h"
#include "support/key_files.h"
#include "support/temp_folder.h"

#include "sarn/encoding.h"
#include "sarn/signature.h"
#include "sarn/signed_config.h"

#include "ul/file.h"

#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>

#include <sys/stat.h>

namespace sarn_test {

namespace {

/// While it lives, the system reports another size of one file than it has.
class PretendedSize {
public:
    PretendedSize(const std::string& file, long long size) {
        struct stat pretending {};
        if (::stat(file.c_str(), &pretending) != 0)
            throw std::runtime_error("no such file: " + file);
        m_watch.after("fstat", [size, number = pretending.st_ino](const Call& call) {
            auto* const status = call.getPointer<struct stat>(1);
            if (status->st_ino == number)
                status->st_size = size;
        });
    }

private:
    CallWatch m_watch;
};

class PretendedSizes : public testing::Test {
protected:
    PretendedSizes() : m_file(m_folder.write("config", sarn::base64Encode("[a]\nb=c\n", 8, true, true).toUTF8())) {
        ul::TBuffer<unsigned char> signature;
        sarn::createFileSignature_RSA_SHA1(m_file, readKey("rsa1024"), signature);
        sarn::storeSignatureBase64(m_folder.getPath("config.sig"), signature);
    }

    /// Expects that `read` is told that the configuration cannot be held in memory.
    template <class Read>
    void expectTooLarge(long long size, Read read) {
        const PretendedSize pretended(m_folder.getNative("config"), size);
        const ul::P<ul::CError> error = catchError<ul::CFileError>(read);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->what(),
                  "Cannot read file '" + m_file.getString().toUTF8() + "': it is too large to be held in memory.");
        EXPECT_EQ(error->getCode(), -1);
    }

    /// Reads the configuration, which is Base64 text.
    void readConfig() const { ul::make<sarn::CSignedConfig>(m_file, readPublicKey("rsa1024"), true); }

    const TempFolder m_folder;
    ul::CWindowsPath m_file;
};

} // namespace

TEST_F(PretendedSizes, TextFileLargerThanAnInt_IsAFileErrorThatSaysSo) {
    expectTooLarge(1LL + INT_MAX, [&] { ul::readUTF8TextFile(m_file); });
    expectTooLarge(INT_MAX - 65535LL, [&] { ul::readUTF8TextFile(m_file); });
}

TEST_F(PretendedSizes, TextFileWhoseSizeIsAboveTheLimit_IsRefusedBeforeItIsRead) {
    const PretendedSize pretended(m_folder.getNative("config"), 1001);
    EXPECT_THROW(ul::readUTF8TextFile(m_file, 1000), ul::CFileError);
    EXPECT_NO_THROW(ul::readUTF8TextFile(m_file, 1001));
}

TEST_F(PretendedSizes, TextFileThatIsShorterThanItsSize_IsReadToItsEnd) {
    const ul::String text = ul::readUTF8TextFile(m_file);
    for (const long long size : {0LL, 1LL, 1000LL, INT_MAX - 65536LL}) {
        const PretendedSize pretended(m_folder.getNative("config"), size);
        EXPECT_TRUE(ul::readUTF8TextFile(m_file) == text) << size;
    }
}

TEST_F(PretendedSizes, ConfigurationLargerThanAnInt_IsAFileErrorThatSaysSo) {
    expectTooLarge(1LL + INT_MAX, [&] { readConfig(); });
}

TEST_F(PretendedSizes, ConfigurationCutAfterItWasVerified_IsAnError) {
    for (const long long size : {1000LL, 1LL * INT_MAX}) {
        const PretendedSize pretended(m_folder.getNative("config"), size);
        const ul::P<ul::CError> error = catchError<ul::CError>([&] { readConfig(); });
        ASSERT_TRUE(error);
        EXPECT_STREQ(error->what(), "Unexpected end of stream.");
    }
}

TEST_F(PretendedSizes, SignedFileThatShrinksOrGrows_IsSignedAsItIsRead) {
    ul::TBuffer<unsigned char> signature;
    sarn::loadSignatureBase64(m_folder.getPath("config.sig"), signature);
    for (const long long size : {0LL, 5LL, 1LL << 40}) {
        const PretendedSize pretended(m_folder.getNative("config"), size);
        EXPECT_TRUE(sarn::verifyFileSignature_RSA_SHA1(m_file, readPublicKey("rsa1024"), signature)) << size;
    }
}

} // namespace sarn_test
