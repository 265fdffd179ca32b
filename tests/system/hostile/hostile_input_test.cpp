// SPDX-License-Identifier: Apache-2.0
// Ciphertexts and saved states from a medium that anyone can write to, files that are exchanged after they were
// verified and before they are opened again to be parsed, and files whose size is not the one that the system reports.
#include "failures/call_watch.h"
#include "failures/signed_file.h"
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"

#include "ul/file.h"

#include <sys/stat.h>

namespace sarn_test {

namespace {

/// Decrypts and appends to a buffer, of which the byte before the result must stay. Returns whether that raised an
/// error.
bool isRefused(const CipherSizes& sizes, const Bytes& encrypted) {
    const auto size = static_cast<int>(encrypted.size());
    Buffer out = makeBuffer(toBytes("a"));
    bool hasRaised = false;
    try {
        getAnyCipher(sizes.id)->decrypt(TestKey(sizes.key), encrypted.data(), size, out, true, nullptr);
        EXPECT_LE(out.getUsed(), 1 + size - sizes.iv);
    } catch (const ul::CError&) {
        hasRaised = true;
    }
    EXPECT_GE(out.getUsed(), 1);
    EXPECT_EQ(out.getData()[0], 'a');
    return hasRaised;
}

/// The number of bytes that all allocations of the libraries have asked for.
std::intptr_t sumAllocations(const CallWatch& watch) {
    std::intptr_t sum = 0;
    for (const char* const name : {"malloc", "_Znwm", "_Znam", "_ZnwmRKSt9nothrow_t"})
        for (const Call& call : watch.getCalls(name))
            sum += call.arguments[0];
    for (const Call& call : watch.getCalls("realloc"))
        sum += call.arguments[1];
    for (const Call& call : watch.getCalls("calloc"))
        sum += call.arguments[0] * call.arguments[1];
    return sum;
}

constexpr char signedText[] = "[a]\nwho=host\n";

struct ExchangedFile : testing::TestWithParam<bool> {
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
struct PretendedSizes : testing::Test {
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

TEST(HostileCiphertext, CutOrChanged_IsDecryptedOrRefused_AndKeepsTheBytesBeforeTheResult) {
    int refused = 0;
    for (const CipherSizes& sizes : getRegisteredCiphers()) {
        SCOPED_TRACE(sizes.id);
        Buffer buffer;
        getAnyCipher(sizes.id)->encrypt(TestKey(sizes.key), makePattern(40).data(), 40, buffer, false, nullptr);
        const Bytes encrypted = toBytes(buffer);
        for (std::size_t at = 0; at < encrypted.size(); ++at) {
            Bytes changed = encrypted;
            changed[at] = static_cast<unsigned char>(changed[at] ^ 0x80);
            for (const Bytes& text : {changed, cut(encrypted, static_cast<int>(at))})
                refused += isRefused(sizes, text) ? 1 : 0;
        }
    }
    EXPECT_GT(refused, 100);
}

TEST(HostileState, WithEachLengthInEachPlace_IsLoadedOrRefusedWithMemoryForItsBytesOnly) {
    int refused = 0;
    for (const Vector& vector : readStates()) {
        const Bytes state = vector.getBytes("state");
        const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType(vector.getSection().c_str());
        for (std::size_t at = 0; at + 4 <= state.size(); ++at) {
            for (const unsigned length : {0x7FFFFFFFU, 0xFFFFFFFFU, 0x00100000U}) {
                const Bytes damaged = withWord(state, at, length);
                const CallWatch watch;
                try {
                    loadState(*type->createDigest(), damaged);
                } catch (const ul::CError&) {
                    ++refused;
                }
                ASSERT_LT(sumAllocations(watch), 20000) << vector.describe() << " " << at << " " << length;
            }
        }
    }
    EXPECT_GT(refused, 1000);
}

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
