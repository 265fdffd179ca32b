// SPDX-License-Identifier: Apache-2.0
// The memory of the process contains no keys, passwords and plaintexts after the objects that held them have ended:
// after each success, and after each failure of an allocation or of a call of a dependency.
#include "failures/injection.h"
#include "failures/memory_search.h"
#include "support/cipher_test_data.h"
#include "support/key_files.h"
#include "support/log_capture.h"

#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"
#include "sarn/signature.h"

#include "ul/file.h"

#include <openssl/opensslv.h>

namespace sarn_test {

namespace {

using Key = ul::TCryptBuffer<unsigned char>;
using Password = ul::TCryptBuffer<char>;

const Canary secret(7);

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

/// Decrypts the secret into a buffer of secrets.
void decryptSecretText(const char* id, bool isDamaged, bool isPadded) {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher(id);
    const TestKey key(cipher->getKeySize());
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

void cacheKeysOfSecretPassword() {
    sarn::CPasswordKeyCache cache{Secret<char>()};
    cache.getKey(32, 1, 2);
    cache.getKey(16, 2, 2);
    cache.getKey(-1, 2, 2);
}

/// Wiping the wide form of the passphrase is up to the host.
void signWithSecretPassphrase() {
    static const ul::String key = readKey("rsa2048_encrypted_traditional");
    const ul::String passphrase(Secret<char>().getData(), Canary::size);
    sarn::createRSA_SHA1()->beginSign(key, passphrase);
}

/// The text of a private key that a host reads and wipes. No other test of this program reads this key.
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

/// The secret and the first key of cacheKeysOfSecretPassword().
std::vector<Canary> makeSecrets() {
    return {secret, Canary::of(sarn::CPasswordKeyCache(Secret<char>()).getKey(32, 1, 2)->getData())};
}

/// A piece of each line of the private key's text, as bytes and as wide characters.
std::vector<Canary> makeKeyCanaries() {
    const KeyText key;
    const std::wstring& text = key.text.toStdWString();
    std::vector<Canary> canaries;
    // Full lines only: libcrypto does not wipe the memory in which it has decoded the last one.
    for (std::size_t line = text.find(L'\n') + 1; text.at(line + 64) == L'\n'; line += 65) {
        // The piece follows the exponent, which other keys contain too.
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
    bool isKeyFile = false;
    /// Where libcrypto leaves the secret if it has no memory.
    std::string mayStayIn = {};
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
    {"SignPassphrase", signWithSecretPassphrase, false, "[stack]"},
#if OPENSSL_VERSION_NUMBER >= 0x30000000L
    {"PrivateKeyFromAFile", signWithKeyFromAFile, true, "[heap]"},
#else
    {"PrivateKeyFromAFile", signWithKeyFromAFile, true},
#endif
};

void runAnyway(const SecretUse& use) {
    try {
        use.run();
    } catch (const std::exception&) {
        // An error ends the use too.
    }
}

struct SecretUses : testing::TestWithParam<SecretUse> {
    void SetUp() override { runAnyway(GetParam()); }

    void expectGone(const std::string& when, const std::string& except = "") {
        EXPECT_EQ(freed.take(), 0) << "freed blocks contained the secret " << when;
        for (const std::string& place : findInMemory(getCanaries(GetParam().isKeyFile))) {
            if (place != except)
                ADD_FAILURE() << "the secret is in " << place << " " << when;
        }
    }

    FreedSecrets freed{getCanaries(GetParam().isKeyFile)};
};

} // namespace

TEST_P(SecretUses, AreGoneAfterEveryEnd) {
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
            expectGone("after call " + std::to_string(index) + ", " + failed + ", failed",
                       ofAllocations ? GetParam().mayStayIn : "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, SecretUses, testing::ValuesIn(uses), getRowName<SecretUse>);

TEST(SecretsSearch, LineOfAKeyInMemory_IsFound) {
    ASSERT_GT(getCanaries(true).size(), 40u) << "two for each line";
    EXPECT_EQ(findInMemory(getCanaries(true)), std::vector<std::string>());
    {
        const KeyText key;
        EXPECT_FALSE(findInMemory(getCanaries(true)).empty());
    }
    EXPECT_EQ(findInMemory(getCanaries(true)), std::vector<std::string>());
}

TEST(SecretsSearch, SecretInABlockThatIsFreed_IsCounted) {
    const Canary another(4);
    FreedSecrets watched({another});
    for (const bool isWiped : {false, true}) {
        void* const block = ::operator new(100);
        another.write(static_cast<unsigned char*>(block) + 50);
        if (isWiped)
            ul::wipe(block, 100);
        ::operator delete(block);
        EXPECT_EQ(watched.take(), isWiped ? 0 : 1);
    }
}

TEST(SecretsSearch, SecretInMemory_IsFound) {
    // Another secret, so that the other tests do not find copies that this one leaves.
    const Canary another(3);
    Key key(Canary::size, -1);
    another.write(key.getData());
    EXPECT_FALSE(findInMemory({another}).empty());
    // Half of it between other bytes.
    Key half(100, -1);
    std::copy_n(key.getData() + 16, 16, half.getData() + 33);
    key = Key();
    const std::vector<std::string> places = findInMemory({another});
    EXPECT_NE(std::find(places.begin(), places.end(), "[heap]"), places.end());
}

} // namespace sarn_test
