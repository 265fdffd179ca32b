// SPDX-License-Identifier: Apache-2.0
// No keys, passphrases or plaintexts remain in the process after the short forms that held them are gone.
#include "failures/memory_search.h"
#include "support/temp_folder.h"

#include "sarn/host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <optional>

namespace sarn_test {

namespace {

using Key = ul::TCryptBuffer<unsigned char>;

constexpr int textSize = 64;

/// A secret text in a file, between other letters, because the next owner of a freed block overwrites its ends first.
/// The object contains it only masked.
class SecretText {
public:
    explicit SecretText(std::string_view letter = "f") {
        Key text = makeText();
        m_narrow = std::make_unique<Canary>(Canary::of(text.getData()));
        Key wide(Canary::size, 0);
        for (int i = 0; wide.getUsed() < Canary::size; ++i) {
            const wchar_t character = text.getData()[i];
            wide.insert(wide.getUsed(), &character, sizeof character);
        }
        m_wide = std::make_unique<Canary>(Canary::of(wide.getData()));
        std::string filler;
        for (int i = 0; i < 20000; ++i)
            filler += letter;
        // Without a buffer, in which the secret would stay.
        std::ofstream file;
        file.rdbuf()->pubsetbuf(nullptr, 0);
        file.open(path);
        file << filler << ul::CBytes(text).asText() << filler;
        EXPECT_TRUE(file.flush());
        m_freed.emplace(std::vector<Canary>{*m_narrow, *m_wide});
    }

    ul::CWindowsPath getPath() const { return ul::path(path); }

    Key makePlaintext() const { return ul::readSecretFile(getPath()); }

    void expectThere() const { EXPECT_FALSE(findInMemory({*m_narrow}).empty() && findInMemory({*m_wide}).empty()); }

    void expectGone() {
        EXPECT_EQ(m_freed->take(), 0) << "freed blocks contain the secret";
        for (const Canary* const canary : {m_narrow.get(), m_wide.get()})
            for (const std::string& place : findInMemory({*canary}))
                ADD_FAILURE() << (canary == m_wide.get() ? "the wide secret" : "the secret") << " is in " << place;
    }

private:
    static Key makeText() {
        Key text = ul::makeRandomBytes(textSize);
        std::transform(text.getData(), text.getData() + textSize, text.getData(),
                       [](unsigned char byte) { return static_cast<unsigned char>('A' + byte % 50); });
        return text;
    }

    const TempFolder folder;
    const std::filesystem::path path = folder.getNative("secret");
    std::unique_ptr<Canary> m_narrow;
    std::unique_ptr<Canary> m_wide;
    std::optional<FreedSecrets> m_freed;
};

} // namespace

TEST(SecretsOfHosts, ReadAsTextAndUsed_AreGoneAfterwards) {
    SecretText secret;
    {
        const ul::CSecretText text = ul::readSecretTextFile(secret.getPath());
        const ul::CSecretText line = ul::readSecretLine(secret.getPath());
        sarn::deriveKey(text.toUTF8(), "salt", 2, 32);
        sarn::checkPassPhrase(line);
        secret.expectThere();
    }
    secret.expectGone();
}

TEST(SecretsOfHosts, EncodedText_IsGoneWithItsText) {
    // Letters of one, two and four bytes.
    for (const char* const letter : {"f", "\xC3\xA4", "\xF0\x9F\x94\x91"}) {
        SCOPED_TRACE(letter);
        SecretText secret(letter);
        {
            const ul::CSecretText text = ul::readSecretTextFile(secret.getPath());
            EXPECT_GT(text.toUTF8().getUsed(), textSize);
        }
        secret.expectGone();
    }
}

TEST(SecretsOfHosts, ReadAsBytes_AreGoneAfterwards) {
    SecretText secret;
    {
        const Key key = ul::readSecretFile(secret.getPath());
        sarn::hmacSHA1(key, "message");
        sarn::hmacSHA1(ul::toCryptBuffer(key), "message");
        secret.expectThere();
    }
    secret.expectGone();
}

TEST(SecretsOfHosts, PlaintextOfStreams_IsGoneWithThem) {
    for (const char* const id : {"aes256cbc", "bfcbc"}) {
        for (const bool isFinished : {false, true}) {
            SCOPED_TRACE(id + std::string(isFinished ? ", finished" : ""));
            const Key key = ul::makeRandomBytes(id[0] == 'a' ? 32 : 16);
            SecretText secret;
            {
                sarn::CStreamEncryptor encryptor(id, key);
                sarn::CStreamDecryptor decryptor(id, key);
                decryptor.update(encryptor.update(secret.makePlaintext()));
                if (isFinished) {
                    decryptor.update(encryptor.finish());
                    // Its result is shorter than the plaintext before, of which the block still has a part.
                    decryptor.finish();
                }
                secret.expectThere();
            }
            secret.expectGone();
        }
    }
}

TEST(SecretsOfHosts, LastBlockThatWaitsForPadding_IsGoneWithTheStream) {
    /// Inverts its input in blocks that are long enough for a secret in the middle.
    class Inverter : public sarn::CCipher_Null {
    public:
        int getBlockSize() const override { return 512; }
        void encryptWithoutPadding(const Key& key, const void* data, int size, ul::TBuffer<unsigned char>& out,
                                   bool append, const unsigned char* iv) override {
            CCipher_Null::encryptWithoutPadding(key, data, size, out, append, iv);
            invert(out.getData() + out.getUsed() - size, size);
        }
        void decryptWithoutPadding(const Key& key, const void* data, int size, ul::TBuffer<unsigned char>& out,
                                   bool append, const unsigned char* iv) override {
            encryptWithoutPadding(key, data, size, out, append, iv);
        }
        static void invert(unsigned char* data, int size) {
            std::transform(data, data + size, data,
                           [](unsigned char byte) { return static_cast<unsigned char>(~byte); });
        }
    };
    SecretText secret;
    Key plaintext = secret.makePlaintext();
    const auto isFiller = [](unsigned char byte) { return byte == 'f'; };
    unsigned char* const text =
        std::find_if_not(plaintext.getData(), plaintext.getData() + plaintext.getUsed(), isFiller);
    unsigned char* const block = text - 200;
    Inverter::invert(block, 512);
    {
        sarn::CStreamDecryptor decryptor(ul::make<Inverter>(), Key());
        EXPECT_TRUE(decryptor.update({block, 512}).empty());
        secret.expectThere();
    }
    secret.expectGone();
}

TEST(SecretsOfHosts, PlaintextOfOneCall_IsGoneAfterwards) {
    SecretText secret;
    const Key key = ul::makeRandomBytes(32);
    const auto encrypted = sarn::encrypt("aes256cbc", key, secret.makePlaintext());
    EXPECT_GT(sarn::decrypt("aes256cbc", key, encrypted).getUsed(), textSize);
    secret.expectGone();
}

TEST(SecretsOfHosts, PlaintextInAResultThatGrows_DoesNotStayInTheOldBlock) {
    SecretText secret;
    const Key key = ul::makeRandomBytes(32);
    sarn::CStreamEncryptor encryptor("aes256cbc", key);
    ul::TBuffer<unsigned char> encrypted;
    const auto add = [&](ul::CBytes bytes) {
        encrypted.insert(encrypted.getUsed(), bytes.data(), static_cast<int>(bytes.size()));
    };
    add(encryptor.update(secret.makePlaintext()));
    add(encryptor.update(std::string(3000000, 'f')));
    sarn::CStreamDecryptor decryptor("aes256cbc", key);
    constexpr int first = 40000;
    decryptor.update({encrypted.getData(), first});
    // Its block follows that of the result, which therefore cannot grow in place.
    const std::string neighbour(50000, 'n');
    secret.expectThere();
    decryptor.update({encrypted.getData() + first, encrypted.getUsed() - first});
    secret.expectGone();
}

} // namespace sarn_test
