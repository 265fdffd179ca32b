// SPDX-License-Identifier: Apache-2.0
// Keys, passwords and plaintexts stand nowhere in the process once their holders have gone: after each success, and
// after the failure of each allocation and of each call of a dependency on the way.
#include "failures/injection.h"
#include "failures/memory_search.h"
#include "support/key_files.h"
#include "support/log_capture.h"

#include "sarn/cipher.h"
#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"
#include "sarn/signature.h"

#include "ul/file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <new>

#include <fcntl.h>
#include <unistd.h>

namespace sarn_test {

namespace {

using Key = ul::TCryptBuffer<unsigned char>;
using Password = ul::TCryptBuffer<char>;

const Canary secret(7);

template <class Buffer>
void fillWithSecret(Buffer& buffer) {
    buffer.setUsed(Canary::size);
    secret.write(reinterpret_cast<unsigned char*>(buffer.getData()));
}

const std::vector<Canary>& getSecrets() {
    static const std::vector<Canary> secrets = {secret};
    return secrets;
}

constexpr unsigned char iv[16] = {};

void encryptUnderSecretKey() {
    Key key;
    fillWithSecret(key);
    ul::TBuffer<unsigned char> out;
    sarn::CCipherManager::get()->getCipher("aes256cbc")->encrypt(key, "text", 4, out, false, nullptr);
    sarn::CCipherManager::get()->getCipher("aes256cbc")->encryptWithoutPadding(key, "text", 4, out, true, iv);
}

void refuseSecretKeyOfTheWrongSize() {
    Key key;
    fillWithSecret(key);
    ul::TBuffer<unsigned char> out;
    sarn::CCipherManager::get()->getCipher("aes128cbc")->encrypt(key, "text", 4, out, false, nullptr);
}

/// What is decrypted, whole or not, goes into a buffer of secrets.
void decryptSecretText(const char* id, bool isDamaged, bool isPadded) {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher(id);
    Key key(cipher->getKeySize(), -1);
    std::fill_n(key.getData(), key.getUsed(), static_cast<unsigned char>(1));
    ul::TBuffer<unsigned char> encrypted;
    {
        Key text;
        fillWithSecret(text);
        cipher->encrypt(key, text.getData(), text.getUsed(), encrypted, false, iv);
    }
    Key out;
    if (isDamaged)
        encrypted.getData()[encrypted.getUsed() - 1] ^= 1;
    if (isPadded)
        cipher->decrypt(key, encrypted.getData(), encrypted.getUsed(), out, false, iv);
    else
        cipher->decryptWithoutPadding(key, encrypted.getData(), Canary::size, out, false, iv);
}

void deriveFromSecretPassword() {
    Password password;
    fillWithSecret(password);
    Key key(32, -1);
    sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1(password.getData(), password.getUsed(), "saltsalt", 8, 2, 32, key.getData());
}

void cacheKeysOfSecretPassword() {
    Password password;
    fillWithSecret(password);
    const auto cache = ul::make<sarn::CPasswordKeyCache>(password);
    cache->getKey(32, 1, 2);
    cache->getKey(16, 2, 2);
    cache->getKey(-1, 2, 2);
}

void authenticateUnderSecretKey() {
    Key key;
    fillWithSecret(key);
    ul::TBuffer<unsigned char> out;
    sarn::calcHMAC_SHA1(out, "text", 4, key.getData(), key.getUsed());
}

/// The passphrase as the host's own text is wide, and the host's to wipe.
void signWithSecretPassphrase() {
    ul::String passphrase;
    {
        Password narrow;
        fillWithSecret(narrow);
        passphrase = ul::String(narrow.getData(), static_cast<std::size_t>(narrow.getUsed()));
    }
    static const ul::String key = readKey("rsa2048_encrypted_traditional");
    sarn::createRSA_SHA1()->beginSign(key, passphrase);
}

// No other test of this program reads it.
constexpr char privateKeyName[] = "rsa3072";

std::string getKeyFile(const std::string& name) {
    return getTestDataFolder() + "/keys/" + name + "_for_tests_only.pem";
}

/// A host signs with a key from a file, and wipes the text that it was given.
void signWithPrivateKeyFromAFile() {
    ul::String key;
    const auto wipeKey = [&key](void*) { ul::wipe(key); };
    const std::unique_ptr<void, decltype(wipeKey)> guard(&key, wipeKey);
    key = ul::readUTF8TextFile(ul::CWindowsPath(getKeyFile(privateKeyName).c_str()));
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(key, ul::getEmptyString());
    signer->update("text", 4);
    ul::TBuffer<unsigned char> signature;
    signer->finish(signature);
}

/// A piece of each line but the last of a private key's text, as bytes and as wide characters.
std::vector<Canary> makeKeyCanaries(const char* name) {
    std::array<char, 8192> text;
    const int file = ::open(getKeyFile(name).c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t size = ::read(file, text.data(), text.size());
    ::close(file);
    std::vector<Canary> canaries;
    for (ssize_t start = 0; start + 60 < size; ++start) {
        const bool isLine = start > 0 && text[static_cast<std::size_t>(start) - 1] == '\n';
        if (!isLine || text[static_cast<std::size_t>(start)] == '-')
            continue;
        const char* const piece = text.data() + start + 16;
        canaries.push_back(Canary::of(piece));
        std::array<wchar_t, Canary::size / sizeof(wchar_t)> wide;
        std::copy_n(piece, wide.size(), wide.begin());
        canaries.push_back(Canary::of(wide.data()));
        ul::wipe(wide.data(), sizeof wide);
    }
    ul::wipe(text.data(), text.size());
    // libcrypto frees the memory in which it decoded the last line as it is.
    canaries.erase(canaries.end() - 2, canaries.end());
    return canaries;
}

const std::vector<Canary>& getKeyCanaries() {
    static const std::vector<Canary> canaries = makeKeyCanaries(privateKeyName);
    return canaries;
}

struct SecretUse {
    const char* name;
    std::function<void()> run;
    /// Whether libcrypto, when it has no memory, leaves the secret in the part of the stack that it used.
    bool mayStayOnTheStack = false;
    bool isKeyFile = false;
};

/// For messages of failures.
void PrintTo(const SecretUse& use, std::ostream* out) {
    *out << use.name;
}

const SecretUse uses[] = {
    {"EncryptionKey", encryptUnderSecretKey},
    {"KeyOfTheWrongSize", refuseSecretKeyOfTheWrongSize},
    {"DecryptedText_aes256cbc", [] { decryptSecretText("aes256cbc", false, true); }},
    {"DecryptedText_bfcbc", [] { decryptSecretText("bfcbc", false, true); }},
    {"DecryptedText_cast128cbc", [] { decryptSecretText("cast128cbc", false, true); }},
    {"DamagedText_aes256cbc", [] { decryptSecretText("aes256cbc", true, true); }},
    {"DamagedText_bfcbc", [] { decryptSecretText("bfcbc", true, true); }},
    {"UnpaddedText_aes128cbc", [] { decryptSecretText("aes128cbc", false, false); }},
    {"Password", deriveFromSecretPassword},
    {"CachedPassword", cacheKeysOfSecretPassword},
    {"AuthenticationKey", authenticateUnderSecretKey},
    {"SignPassphrase", signWithSecretPassphrase, true},
    {"PrivateKeyFromAFile", signWithPrivateKeyFromAFile, false, true},
};

/// Runs it, whatever comes of it.
void runAnyway(const SecretUse& use) {
    try {
        use.run();
    } catch (const ul::CError&) {
        // That is a way out, too.
    } catch (const std::bad_alloc&) {
        // And that.
    }
}

class SecretsInMemory : public testing::TestWithParam<SecretUse> {
protected:
    void SetUp() override { runAnyway(GetParam()); }

    void expectGone(const std::string& when) {
        const std::vector<Canary>& secrets = GetParam().isKeyFile ? getKeyCanaries() : getSecrets();
        for (const std::string& place : findInMemory(secrets)) {
            if (place != "[stack]" || !GetParam().mayStayOnTheStack)
                ADD_FAILURE() << "the secret stands in " << place << " " << when;
        }
    }
};

std::string getUseName(const testing::TestParamInfo<SecretUse>& info) {
    return info.param.name;
}

} // namespace

TEST_P(SecretsInMemory, AreGoneOnEveryWayOut) {
    const LogCapture log;
    expectGone("after a success");
    for (const bool ofAllocations : {false, true}) {
        for (int index = 0; !HasFailure(); ++index) {
            std::string failed;
            {
                const Injection injection(ofAllocations, index, Injection::Duration::Once);
                runAnyway(GetParam());
                if (!injection.hasHappened())
                    break;
                failed = injection.getFirst().name;
            }
            expectGone("after call " + std::to_string(index) + ", " + failed + ", failed");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, SecretsInMemory, testing::ValuesIn(uses), getUseName);

TEST(SecretsSearch, ALineOfAKeyThatIsThere_IsFound) {
    ASSERT_GT(getKeyCanaries().size(), 40u) << "two for each line";
    EXPECT_TRUE(findInMemory(getKeyCanaries()).empty());
    {
        ul::String key = ul::readUTF8TextFile(ul::CWindowsPath(getKeyFile(privateKeyName).c_str()));
        EXPECT_FALSE(findInMemory(getKeyCanaries()).empty());
        ul::wipe(key);
    }
    EXPECT_TRUE(findInMemory(getKeyCanaries()).empty());
}

TEST(SecretsSearch, ASecretThatIsThere_IsFound) {
    // One of its own: what this test leaves behind is no concern of the others.
    const Canary another(3);
    Key key(Canary::size, -1);
    another.write(key.getData());
    EXPECT_FALSE(findInMemory({another}).empty());
    // Also half of it, within other bytes.
    Key half(100, -1);
    std::copy_n(key.getData() + 16, 16, half.getData() + 33);
    key = Key();
    const std::vector<std::string> places = findInMemory({another});
    EXPECT_NE(std::find(places.begin(), places.end(), "[heap]"), places.end());
    half = Key();
}

} // namespace sarn_test
