// SPDX-License-Identifier: Apache-2.0
// The library never asks for the passphrase of an encrypted key, on a terminal or on standard input.
#include "support/key_files.h"
#include "support/temp_folder.h"

#include "sarn/signature.h"
#include "sarn/signed_config.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <functional>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sarn_test {

namespace {

enum class Input { Terminal, Closed, Endless };

/// GoogleTest would print the bytes, whose order is the processor's.
void PrintTo(Input input, std::ostream* out) {
    *out << static_cast<int>(input);
}

/// The ends of the standard streams of a process, and the ends that the test keeps.
struct Streams {
    int input = -1;
    int output = -1;
    int keptInput = -1;
    int keptOutput = -1;
};

Streams openTerminal() {
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0)
        throw std::runtime_error("no terminal");
    const int end = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY);
    return {end, end, terminal, terminal};
}

Streams openPipes() {
    int input[2];
    int output[2];
    if (::pipe(input) != 0 || ::pipe(output) != 0)
        throw std::runtime_error("no pipe");
    return {input[0], output[1], input[1], output[0]};
}

/// Writes lines until the pipe is full.
void fillPipe(int file) {
    ::fcntl(file, F_SETFL, O_NONBLOCK);
    while (::write(file, "x\n", 2) > 0) {
    }
}

bool isReadyFor(int file, short event) {
    pollfd state{file, event, 0};
    return ::poll(&state, 1, 0) > 0 && (state.revents & event) != 0;
}

int countWaiting(int file) {
    int count = -1;
    ::ioctl(file, FIONREAD, &count);
    return count;
}

/// Starts a new session, so that the process has no other terminal.
[[noreturn]] void runChild(Input input, const Streams& streams, const std::function<bool()>& use) {
    ::alarm(20);
    ::setsid();
    if (input == Input::Terminal)
        ::ioctl(streams.input, TIOCSCTTY, 0);
    ::dup2(streams.input, STDIN_FILENO);
    ::dup2(streams.output, STDOUT_FILENO);
    ::dup2(streams.output, STDERR_FILENO);
    if (input == Input::Closed)
        ::close(STDIN_FILENO);
    ::_exit(use() ? 0 : 1);
}

/// Expects `use` to return true in a process that ends by itself and neither prints nor reads.
void expectSilent(Input input, const std::function<bool()>& use) {
    const Streams streams = input == Input::Terminal ? openTerminal() : openPipes();
    if (input == Input::Endless)
        fillPipe(streams.keptInput);
    const int waiting = countWaiting(streams.input);
    const pid_t child = ::fork();
    if (child == 0)
        runChild(input, streams, use);
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << "it waits for an answer";
    EXPECT_EQ(WEXITSTATUS(status), 0) << "another error, or none";
    EXPECT_FALSE(isReadyFor(streams.keptOutput, POLLIN)) << "it printed something";
    EXPECT_EQ(countWaiting(streams.input), waiting) << "it read something";
    for (const int file : {streams.input, streams.output, streams.keptInput, streams.keptOutput})
        ::close(file);
}

/// Whether `use` raises the error of an unreadable key.
std::function<bool()> refusesTheKey(const std::function<void()>& use) {
    return [use] {
        try {
            use();
        } catch (const ul::CError& error) {
            return error.getMessage() == "OpenSSL key corrupted.";
        }
        return false;
    };
}

class NoPrompt : public testing::TestWithParam<Input> {};

} // namespace

TEST_P(NoPrompt, EveryUseOfAnEncryptedKeyWithoutItsPassphrase_RefusesItWithoutAsking) {
    using Signer = sarn::COpenSSLSignatureAlgo::CSigner;
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("a.ini", "[a]\nb=1\n");
    folder.write("a.ini.sig", "QUJD\n");
    const ul::P<sarn::ISignatureAlgo> algo = sarn::createRSA_SHA1();
    ul::TBuffer<unsigned char> signature(256, -1);
    for (const ul::String& text : {readHostileKey("rsa_encrypted.pub"), readKey("rsa2048_encrypted_pkcs8"),
                                   readKey("rsa2048_encrypted_traditional")}) {
        const std::pair<const char*, std::function<void()>> uses[] = {
            {"beginVerify", [&] { algo->beginVerify(text); }},
            {"beginSign without a passphrase", [&] { algo->beginSign(text, ""); }},
            {"beginSign with a wrong passphrase", [&] { algo->beginSign(text, "wrong"); }},
            {"signer with a null passphrase", [&] { ul::make<Signer>(EVP_sha1(), text.toLatin1().c_str(), nullptr); }},
            {"verify a file", [&] { sarn::verifyFileSignature_RSA_SHA1(path, text, signature); }},
            {"sign a file", [&] { sarn::createFileSignature_RSA_SHA1(path, text, signature); }},
            {"load a configuration", [&] { sarn::CSignedConfig(path, text, false); }},
        };
        for (const auto& [name, use] : uses) {
            SCOPED_TRACE(name);
            expectSilent(GetParam(), refusesTheKey(use));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OnATerminal, NoPrompt, testing::Values(Input::Terminal));
INSTANTIATE_TEST_SUITE_P(WithClosedInput, NoPrompt, testing::Values(Input::Closed));
INSTANTIATE_TEST_SUITE_P(WithEndlessInput, NoPrompt, testing::Values(Input::Endless));

} // namespace sarn_test
