// SPDX-License-Identifier: Apache-2.0
// A configuration that another process exchanges all the time while it is loaded.
#include "support/signing.h"
#include "support/temp_folder.h"

#include "sarn/base64.h"
#include "sarn/signed_config.h"

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

namespace sarn_test {

namespace {

constexpr int loadCount = 1500;

/// A process that replaces a file by two others in turns.
class Exchanger {
public:
    explicit Exchanger(const TempFolder& folder) {
        const std::string target = folder.getNative("a.ini");
        const std::string link = folder.getNative("link");
        const std::string sources[] = {folder.getNative("unsigned"), folder.getNative("signed")};
        m_child = ::fork();
        while (m_child == 0) {
            for (const std::string& source : sources) {
                static_cast<void>(::link(source.c_str(), link.c_str()));
                static_cast<void>(::rename(link.c_str(), target.c_str()));
            }
        }
    }
    Exchanger(const Exchanger&) = delete;
    Exchanger& operator=(const Exchanger&) = delete;
    ~Exchanger() {
        ::kill(m_child, SIGKILL);
        ::waitpid(m_child, nullptr, 0);
    }

private:
    pid_t m_child;
};

std::string encode(const std::string& text, bool base64Encoded) {
    return base64Encoded ? sarn::base64Encode(text.data(), static_cast<int>(text.size()), true, true).toLatin1() : text;
}

} // namespace

class ExchangedConfig : public testing::TestWithParam<bool> {};

TEST_P(ExchangedConfig, LoadedAgainAndAgain_IsTheSignedOneOrRefused) {
    const TempFolder folder;
    folder.write("signed", encode("[a]\nwho=host\n", GetParam()));
    folder.write("unsigned", encode("[a]\nwho=evil\n", GetParam()));
    const ul::CWindowsPath path = folder.write("a.ini", folder.read("signed"));
    writeSignatureFile(path, "rsa1024");
    const ul::String publicKey = readPublicKey("rsa1024");
    const Exchanger exchanger(folder);
    int loaded = 0;
    int refused = 0;
    for (int i = 0; i < loadCount; ++i) {
        try {
            sarn::CSignedConfig config(path, publicKey, GetParam());
            ++loaded;
            EXPECT_EQ(config.getValue("/a/who"), "host");
        } catch (const sarn::CSignedConfigSignatureError&) {
            ++refused;
        }
    }
    EXPECT_EQ(loaded + refused, loadCount);
    EXPECT_GT(loaded, 0);
    EXPECT_GT(refused, 0);
}

INSTANTIATE_TEST_SUITE_P(PlainAndBase64, ExchangedConfig, testing::Bool());

} // namespace sarn_test
