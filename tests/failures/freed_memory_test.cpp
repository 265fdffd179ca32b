// SPDX-License-Identifier: Apache-2.0
// Secrets are gone from a block of memory when what held them gives it back.
#include "failures/call_watch.h"
#include "failures/injection.h"
#include "support/expect.h"
#include "support/key_files.h"

#include "sarn/password_key_cache.h"
#include "sarn/signature.h"

#include "ul/pointer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <ostream>
#include <stdexcept>

#include <malloc.h>

namespace sarn_test {

namespace {

/// While it lives, looks for a secret in each block that the libraries free.
class SecretSpy {
public:
    explicit SecretSpy(std::string secret) : m_secret(std::move(secret)) {
        for (const char* const name : {"free", "realloc", "_ZdlPv", "_ZdlPvm", "_ZdaPv"})
            m_watch.before(name, [this](const Call& call) { look(call.getPointer<char>(0)); });
    }
    int getFreedCount() const { return m_freedCount; }
    int getFoundCount() const { return m_foundCount; }

private:
    void look(char* block) {
        if (!block)
            return;
        ++m_freedCount;
        const char* const end = block + ::malloc_usable_size(block);
        m_foundCount += std::search(static_cast<const char*>(block), end, m_secret.begin(), m_secret.end()) != end;
    }

    std::string m_secret;
    int m_freedCount = 0;
    int m_foundCount = 0;
    CallWatch m_watch;
};

constexpr char secret[] = "hunter2-is-the-password";
constexpr int secretSize = sizeof secret - 1;

using CryptBuffer = ul::TCryptBuffer<char>;

void grow() {
    CryptBuffer buffer;
    buffer.init(secret, secretSize);
    buffer.ensureAllocated(10000);
    buffer.insert(0, secret, secretSize);
    for (int i = 0; i < 1000; ++i)
        buffer.insert(buffer.getUsed(), secret, secretSize);
}

void assign() {
    CryptBuffer buffer;
    buffer.init(secret, secretSize);
    CryptBuffer longer(5000, -1);
    std::fill_n(longer.getData(), 5000, 'x');
    buffer = longer;
    CryptBuffer copy(buffer);
    copy.init(secret, secretSize);
    copy = CryptBuffer();
}

void throwHalfWay() {
    const auto fail = [] {
        CryptBuffer buffer;
        buffer.init(secret, secretSize);
        const CryptBuffer copy(buffer);
        throw std::runtime_error("half way");
    };
    EXPECT_THROW(fail(), std::runtime_error);
}

void move() {
    CryptBuffer buffer;
    buffer.init(secret, secretSize);
    CryptBuffer moved(std::move(buffer));
    CryptBuffer assigned;
    assigned.init(secret, secretSize);
    assigned = std::move(moved);
    EXPECT_EQ(assigned.getUsed(), secretSize);
}

struct BufferUse {
    const char* name;
    std::function<void()> run;
    int found = 0;
};

/// For messages of failures.
void PrintTo(const BufferUse& use, std::ostream* out) {
    *out << use.name;
}

const BufferUse bufferUses[] = {
    // The spy sees what it should.
    {"PlainBuffer", [] { ul::TBuffer<char>().init(secret, secretSize); }, 1},
    {"Destroyed", [] { CryptBuffer().init(secret, secretSize); }},
    {"ReleasedThroughItsBase", [] { ul::P<ul::TBuffer<char>>(ul::make<CryptBuffer>())->init(secret, secretSize); }},
    {"Grown", grow},
    {"Assigned", assign},
    {"WithAnExceptionHalfWay", throwHalfWay},
    {"Moved", move},
};

class FreedBuffer : public testing::TestWithParam<BufferUse> {};

using Key = ul::PC<ul::TCryptBuffer<unsigned char>>;

ul::P<sarn::CPasswordKeyCache> makeCache(const char* password) {
    CryptBuffer buffer;
    buffer.init(password, static_cast<int>(std::strlen(password)));
    return ul::make<sarn::CPasswordKeyCache>(buffer);
}

/// A piece of the text of a private key.
std::string getKeyPiece(const ul::String& key) {
    return key.toLatin1().substr(200, 40);
}

} // namespace

TEST_P(FreedBuffer, LeavesNoSecretUnlessItIsPlain) {
    const SecretSpy spy(secret);
    GetParam().run();
    EXPECT_GT(spy.getFreedCount(), 0) << "nothing was freed, nothing was proved";
    EXPECT_EQ(spy.getFoundCount(), GetParam().found);
}

INSTANTIATE_TEST_SUITE_P(All, FreedBuffer, testing::ValuesIn(bufferUses),
                         [](const auto& use) { return std::string(use.param.name); });

TEST(FreedMemory, GrownBufferOfSecrets_GivesTheOldBlockBack) {
    CryptBuffer buffer;
    buffer.init(secret, secretSize);
    const SecretSpy spy(secret);
    buffer.ensureAllocated(10000);
    EXPECT_EQ(spy.getFreedCount(), 1);
}

TEST(FreedMemory, OfAKeyCache_HoldsNeitherPasswordNorKeys) {
    constexpr char password[] = "correct horse battery staple";
    // Eight bytes of the key are enough to find it by.
    const Key known = makeCache(password)->getKey(32, 258, 1000);
    for (const std::string& hidden :
         {std::string(reinterpret_cast<const char*>(known->getData()), 8), std::string(password)}) {
        const SecretSpy spy(hidden);
        {
            const ul::P<sarn::CPasswordKeyCache> cache = makeCache(password);
            const Key key = cache->getKey(32, 258, 1000);
            for (unsigned long long salt = 0; salt < 50; ++salt)
                cache->getKey(32, salt, 1);
            EXPECT_THROW(cache->getKey(-1, 1, 1), ul::CError);
        }
        EXPECT_GT(spy.getFreedCount(), 50);
        EXPECT_EQ(spy.getFoundCount(), 0);
    }
}

TEST(FreedMemory, OfASession_HoldsNoNarrowCopyOfAPrivateKey) {
    const ul::String encrypted = readKey("rsa2048_encrypted_traditional");
    const SecretSpy spy(getKeyPiece(encrypted));
    sarn::createRSA_SHA1()->beginSign(encrypted, testPassphrase);
    EXPECT_GT(spy.getFreedCount(), 0);
    EXPECT_EQ(spy.getFoundCount(), 0);
}

TEST(FreedMemory, OfASessionGivenAPrivateKeyForAPublicOne_HoldsNoNarrowCopyOfIt) {
    const ul::String key = readKey("rsa2048");
    const SecretSpy spy(getKeyPiece(key));
    EXPECT_THROW(sarn::createRSA_SHA1()->beginVerify(key), ul::CError);
    EXPECT_GT(spy.getFreedCount(), 0);
    EXPECT_EQ(spy.getFoundCount(), 0);
}

TEST(BufferWithoutMemory, KeepsItsContent) {
    ul::TBuffer<unsigned char> buffer;
    fill(buffer, toBytes(std::string("abc")));
    const auto expectRefused = [&buffer](auto grow) {
        {
            const AllocationFailure failure(0);
            EXPECT_THROW(grow(), std::bad_alloc);
        }
        EXPECT_EQ(toBytes(buffer), toBytes(std::string("abc")));
    };
    expectRefused([&] { buffer.ensureAllocated(100); });
    expectRefused([&] { buffer.setUsed(100); });
    expectRefused([&] { buffer.insert(1, "0123456789", 10); });
    expectRefused([&] { buffer.init(reinterpret_cast<const unsigned char*>("0123456789"), 10); });
    expectRefused([&] { const ul::TBuffer<unsigned char> copy(buffer); });
}

} // namespace sarn_test
