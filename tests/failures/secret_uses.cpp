// SPDX-License-Identifier: Apache-2.0
#include "failures/secret_uses.h"

#include "support/key_files.h"

#include "sarn/cipher.h"
#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"
#include "sarn/signature.h"

#include "ul/file.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

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

constexpr unsigned char iv[16] = {};

void growBuffer() {
    Password buffer;
    fillWithSecret(buffer);
    buffer.ensureAllocated(10000);
    for (int i = 0; i < 1000; ++i)
        buffer.insert(buffer.getUsed(), buffer.getData(), Canary::size);
}

void assignBuffers() {
    Password buffer;
    fillWithSecret(buffer);
    Password longer(5000, -1);
    std::fill_n(longer.getData(), 5000, 'x');
    buffer = longer;
    Password copy(buffer);
    fillWithSecret(copy);
    copy = Password();
}

void moveBuffers() {
    Password buffer;
    fillWithSecret(buffer);
    Password moved(std::move(buffer));
    Password assigned;
    fillWithSecret(assigned);
    assigned = std::move(moved);
}

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

ul::P<sarn::CPasswordKeyCache> makeCache() {
    Password password;
    fillWithSecret(password);
    return ul::make<sarn::CPasswordKeyCache>(password);
}

void cacheKeysOfSecretPassword() {
    const ul::P<sarn::CPasswordKeyCache> cache = makeCache();
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
std::string getKeyFile() {
    return getTestDataFolder() + "/keys/rsa3072_for_tests_only.pem";
}

void sign(const ul::String& key) {
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(key, ul::getEmptyString());
    signer->update("text", 4);
    ul::TBuffer<unsigned char> signature;
    signer->finish(signature);
}

/// A piece of each line but the last of a private key's text, as bytes and as wide characters.
std::vector<Canary> makeKeyCanaries() {
    std::array<char, 8192> text;
    const int file = ::open(getKeyFile().c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t size = ::read(file, text.data(), text.size());
    ::close(file);
    std::vector<Canary> canaries;
    for (ssize_t start = 0; start + 60 < size; ++start) {
        const bool isLine = start > 0 && text[static_cast<std::size_t>(start) - 1] == '\n';
        if (!isLine || text[static_cast<std::size_t>(start)] == '-')
            continue;
        // After the exponent, which stands in other keys as well.
        const char* const piece = text.data() + start + 24;
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

} // namespace

const std::vector<Canary>& getSecrets() {
    static const std::vector<Canary> secrets = {secret, Canary::of(makeCache()->getKey(32, 1, 2)->getData())};
    return secrets;
}

const std::vector<Canary>& getKeyCanaries() {
    static const std::vector<Canary> canaries = makeKeyCanaries();
    return canaries;
}

KeyText::KeyText() : text(ul::readUTF8TextFile(ul::CWindowsPath(getKeyFile().c_str()))) {}

const std::vector<SecretUse>& getSecretUses() {
    static const std::vector<SecretUse> uses = {
        {"Buffer", [] { fillWithSecret(*ul::make<Password>()); }},
        {"GrownBuffer", growBuffer},
        {"AssignedBuffers", assignBuffers},
        {"MovedBuffers", moveBuffers},
        {"BufferReleasedThroughItsBase", [] { fillWithSecret(*ul::P<ul::TBuffer<char>>(ul::make<Password>())); }},
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
        {"PrivateKeyFromAFile", [] { sign(KeyText().text); }, false, getKeyCanaries},
    };
    return uses;
}

} // namespace sarn_test
