// SPDX-License-Identifier: Apache-2.0
// Keys, passwords and plaintexts stand nowhere in the process once their holders have gone: after each success, and
// after the failure of each allocation and of each call of a dependency on the way.
#include "failures/injection.h"
#include "failures/memory_search.h"
#include "support/key_files.h"
#include "support/log_capture.h"
#include "support/table.h"

#include "sarn/cipher.h"
#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"
#include "sarn/signature.h"

#include "ul/file.h"

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;
using Key = ul::TCryptBuffer<unsigned char>;
using Password = ul::TCryptBuffer<char>;

const Canary secret(7);

/// A buffer of secrets that holds the secret.
template <class T>
struct Secret : ul::TCryptBuffer<T> {
    Secret() {
        this->setUsed(Canary::size);
        secret.write(reinterpret_cast<unsigned char*>(this->getData()));
    }
};

void growBuffer() {
    Secret<char> buffer;
    buffer.ensureAllocated(10000);
    for (int i = 0; i < 1000; ++i)
        buffer.insert(buffer.getUsed(), buffer.getData(), Canary::size);
}

void assignBuffers() {
    Password buffer = Secret<char>();
    Password longer(5000, -1);
    std::fill_n(longer.getData(), 5000, 'x');
    buffer = longer;
    const Secret<char> other;
    buffer = other;
    buffer = Password();
}

void moveBuffers() {
    Password moved = Secret<char>();
    Password assigned = Secret<char>();
    assigned = std::move(moved);
}

constexpr unsigned char iv[16] = {};

void encryptUnderSecretKey(const char* id) {
    const Secret<unsigned char> key;
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher(id);
    Buffer out;
    cipher->encrypt(key, "text", 4, out, false, nullptr);
    cipher->encryptWithoutPadding(key, "text", 4, out, true, iv);
}

/// What is decrypted, whole or not, goes into a buffer of secrets.
void decryptSecretText(const char* id, bool isDamaged, bool isPadded) {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher(id);
    Key key(cipher->getKeySize(), -1);
    std::fill_n(key.getData(), key.getUsed(), static_cast<unsigned char>(1));
    Buffer encrypted;
    cipher->encrypt(key, Secret<char>().getData(), Canary::size, encrypted, false, iv);
    Key out;
    if (isDamaged)
        encrypted.getData()[encrypted.getUsed() - 1] ^= 1;
    if (isPadded)
        cipher->decrypt(key, encrypted.getData(), encrypted.getUsed(), out, false, iv);
    else
        cipher->decryptWithoutPadding(key, encrypted.getData(), Canary::size, out, false, iv);
}

ul::P<sarn::CPasswordKeyCache> makeCache() {
    return ul::make<sarn::CPasswordKeyCache>(Secret<char>());
}

void cacheKeysOfSecretPassword() {
    const ul::P<sarn::CPasswordKeyCache> cache = makeCache();
    cache->getKey(32, 1, 2);
    cache->getKey(16, 2, 2);
    cache->getKey(-1, 2, 2);
}

/// The passphrase as the host's own text is wide, and the host's to wipe.
void signWithSecretPassphrase() {
    static const ul::String key = readKey("rsa2048_encrypted_traditional");
    const ul::String passphrase(Secret<char>().getData(), Canary::size);
    sarn::createRSA_SHA1()->beginSign(key, passphrase);
}

/// A private key's text as a host reads it from its file, wiped in the end. No other test of this program reads it.
struct KeyText {
    KeyText() = default;
    KeyText(const KeyText&) = delete;
    KeyText& operator=(const KeyText&) = delete;
    ~KeyText() { ul::wipe(text); }

    ul::String text =
        ul::readUTF8TextFile(ul::CWindowsPath((getTestDataFolder() + "/keys/rsa3072_for_tests_only.pem").c_str()));
};

void signWithKeyFromAFile() {
    const KeyText key;
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(key.text, ul::getEmptyString());
    signer->update("text", 4);
    Buffer signature;
    signer->finish(signature);
}

/// The secret and the first key that is derived from it.
std::vector<Canary> makeSecrets() {
    return {secret, Canary::of(makeCache()->getKey(32, 1, 2)->getData())};
}

/// A piece of each line of a private key's text, as bytes and as wide characters.
std::vector<Canary> makeKeyCanaries() {
    const KeyText key;
    const std::wstring& text = key.text.toStdWString();
    std::vector<Canary> canaries;
    // Of full lines: libcrypto frees the memory in which it decoded the last one as it is.
    for (std::size_t line = text.find(L'\n') + 1; text.at(line + 64) == L'\n'; line += 65) {
        // After the exponent, which stands in other keys as well.
        const wchar_t* const piece = text.data() + line + 24;
        canaries.push_back(Canary::of(piece));
        std::array<char, Canary::size> narrow;
        std::transform(piece, piece + narrow.size(), narrow.begin(), [](wchar_t c) { return static_cast<char>(c); });
        canaries.push_back(Canary::of(narrow.data()));
        ul::wipe(narrow.data(), narrow.size());
    }
    return canaries;
}

const std::vector<Canary>& getCanaries(bool ofKey) {
    static const std::vector<Canary> canaries[] = {makeSecrets(), makeKeyCanaries()};
    return canaries[ofKey];
}

struct SecretUse : Row {
    std::function<void()> run;
    /// Whether libcrypto, when it has no memory, leaves the secret in the part of the stack that it used.
    bool mayStayOnTheStack = false;
    bool isKeyFile = false;
};

const SecretUse uses[] = {
    {"Buffer", [] { const Secret<char> buffer; }},
    {"BufferReleasedThroughItsBase", [] { const ul::P<ul::TBuffer<char>> buffer = ul::make<Secret<char>>(); }},
    {"GrownBuffer", growBuffer},
    {"AssignedBuffers", assignBuffers},
    {"MovedBuffers", moveBuffers},
    {"EncryptionKey", [] { encryptUnderSecretKey("aes256cbc"); }},
    {"KeyOfTheWrongSize", [] { encryptUnderSecretKey("aes128cbc"); }},
    {"DecryptedText_aes256cbc", [] { decryptSecretText("aes256cbc", false, true); }},
    {"DecryptedText_bfcbc", [] { decryptSecretText("bfcbc", false, true); }},
    {"DecryptedText_cast128cbc", [] { decryptSecretText("cast128cbc", false, true); }},
    {"DamagedText_aes256cbc", [] { decryptSecretText("aes256cbc", true, true); }},
    {"DamagedText_bfcbc", [] { decryptSecretText("bfcbc", true, true); }},
    {"UnpaddedText_aes128cbc", [] { decryptSecretText("aes128cbc", false, false); }},
    {"Password",
     [] {
         sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1(Secret<char>().getData(), Canary::size, "salt", 4, 2, 32,
                                                Key(32, -1).getData());
     }},
    {"CachedPassword", cacheKeysOfSecretPassword},
    {"AuthenticationKey",
     [] {
         Buffer out;
         sarn::calcHMAC_SHA1(out, "text", 4, Secret<char>().getData(), Canary::size);
     }},
    {"SignPassphrase", signWithSecretPassphrase, true},
    {"PrivateKeyFromAFile", signWithKeyFromAFile, false, true},
};

/// Runs it, whatever comes of it.
void runAnyway(const SecretUse& use) {
    try {
        use.run();
    } catch (const std::exception&) {
        // That is a way out, too.
    }
}

class SecretUses : public testing::TestWithParam<SecretUse> {
protected:
    void SetUp() override { runAnyway(GetParam()); }

    void expectGone(const std::string& when) {
        for (const std::string& place : findInMemory(getCanaries(GetParam().isKeyFile))) {
            if (place != "[stack]" || !GetParam().mayStayOnTheStack)
                ADD_FAILURE() << "the secret stands in " << place << " " << when;
        }
    }
};

} // namespace

TEST_P(SecretUses, AreGoneOnEveryWayOut) {
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

INSTANTIATE_TEST_SUITE_P(All, SecretUses, testing::ValuesIn(uses), getRowName<SecretUse>);

TEST(SecretsSearch, ALineOfAKeyThatIsThere_IsFound) {
    ASSERT_GT(getCanaries(true).size(), 40u) << "two for each line";
    EXPECT_EQ(findInMemory(getCanaries(true)), std::vector<std::string>());
    {
        const KeyText key;
        EXPECT_FALSE(findInMemory(getCanaries(true)).empty());
    }
    EXPECT_EQ(findInMemory(getCanaries(true)), std::vector<std::string>());
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
