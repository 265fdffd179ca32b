// SPDX-License-Identifier: Apache-2.0
#include "support/cipher_test_data.h"
#include "system/exchange/bundle.h"

namespace sarn_test {

namespace {

constexpr int sizes[] = {0, 1, 7, 8, 9, 15, 16, 17, 31, 32, 33, 255, 1000, 4096};

std::vector<std::string> getIDs() {
    std::vector<std::string> ids = {"aes256cbc", "aes128cbc", "bfcbc", "cast128cbc", "null"};
    if (hasIDEA)
        ids.emplace_back("ideacbc");
    return ids;
}

/// One cipher at work on one plaintext.
class Sample {
public:
    Sample(const std::string& id, int size)
        : m_cipher(getAnyCipher(id)),
          m_key(m_cipher->getKeySize()),
          m_iv(makePattern(16)),
          m_text(makePattern(size)),
          m_name(id + "/" + std::to_string(size)) {}

    std::string getName(const char* kind) const { return "cipher/" + m_name + "/" + kind; }

    Bytes encrypt(const unsigned char* iv) const {
        ul::TBuffer<unsigned char> out;
        m_cipher->encrypt(m_key, m_text.data(), getSize(m_text), out, false, iv);
        return toBytes(out);
    }

    Bytes encryptWithoutPadding() const {
        ul::TBuffer<unsigned char> out;
        m_cipher->encryptWithoutPadding(m_key, m_text.data(), getSize(m_text), out, false, m_iv.data());
        return toBytes(out);
    }

    void add(Bundle& bundle) const {
        bundle.exact[getName("padded")] = encrypt(m_iv.data());
        bundle.exact[getName("unpadded")] = encryptWithoutPadding();
        bundle.random[getName("random")] = encrypt(nullptr);
    }

    int check(const Bundle& bundle) const {
        requireText(bundle.exact, "padded", m_iv.data());
        requireText(bundle.random, "random", nullptr);
        const std::string name = getName("unpadded");
        const Bytes& unpadded = getItem(bundle.exact, name);
        ul::TBuffer<unsigned char> out;
        m_cipher->decryptWithoutPadding(m_key, unpadded.data(), getSize(unpadded), out, false, m_iv.data());
        Bytes completed = m_text;
        completed.resize(unpadded.size());
        require(toBytes(out) == completed, name);
        return 3;
    }

private:
    static int getSize(const Bytes& bytes) { return static_cast<int>(bytes.size()); }

    void requireText(const Items& items, const char* kind, const unsigned char* iv) const {
        const Bytes& encrypted = getItem(items, getName(kind));
        ul::TBuffer<unsigned char> out;
        m_cipher->decrypt(m_key, encrypted.data(), getSize(encrypted), out, false, iv);
        require(toBytes(out) == m_text, getName(kind));
    }

    ul::P<sarn::ICipher> m_cipher;
    TestKey m_key;
    Bytes m_iv;
    Bytes m_text;
    std::string m_name;
};

} // namespace

void addCiphers(Bundle& bundle) {
    for (const std::string& id : getIDs()) {
        for (const int size : sizes)
            Sample(id, size).add(bundle);
    }
}

int checkCiphers(const Bundle& bundle) {
    int count = 0;
    for (const std::string& id : getIDs()) {
        // A build without IDEA wrote none.
        if (bundle.exact.count(Sample(id, 0).getName("padded")) == 0 && id == "ideacbc")
            continue;
        for (const int size : sizes)
            count += Sample(id, size).check(bundle);
    }
    return count;
}

} // namespace sarn_test
