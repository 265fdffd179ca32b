// SPDX-License-Identifier: Apache-2.0
// Buffers, ciphers and digests without memory, and with calls of libcrypto that fail or return too few bytes.
// MD5 represents all hashes: they are one template.
#include "failures/injection.h"
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"

#include "sarn/stream_decryptor.h"

#include <openssl/err.h>

#include <cstring>
#include <memory>
#include <thread>

#include <malloc.h>

namespace sarn_test {

namespace {

struct CipherFailures : testing::Test {
    /// Makes `call` report `count` bytes fewer than it wrote.
    void shorten(const char* call, int count) {
        m_watch.after(call, [count](const Call& final) { *final.getPointer<int>(2) -= count; });
    }

    sarn::CCipher_AES256CBC m_cipher;
    Buffer m_out;
    CallWatch m_watch;
};

const Bytes md5OfAbc = fromHex("900150983cd24fb0d6963f7d28e17f72");
const Bytes md5OfNothing = fromHex("d41d8cd98f00b204e9800998ecf8427e");

struct DigestFailures : testing::Test {
    const ul::P<sarn::IDigestType> m_type = ul::make<sarn::CDigestType_MD5>();
    CallWatch m_watch;
};

using DigestFailuresDeathTest = DigestFailures;

} // namespace

TEST(BufferFailures, OfAllocations_LeaveTheContent) {
    const Bytes content = makePattern(3);
    const Bytes more = makePattern(10);
    Buffer buffer = makeBuffer(content);
    const auto expectRefused = [&](auto grow) {
        {
            const AllocationFailure failure(0);
            EXPECT_THROW(grow(), std::bad_alloc);
        }
        EXPECT_EQ(toBytes(buffer), content);
    };
    expectRefused([&] { buffer.ensureAllocated(100); });
    expectRefused([&] { buffer.setUsed(100); });
    expectRefused([&] { buffer.insert(1, more.data(), 10); });
    expectRefused([&] { buffer.init(more.data(), 10); });
    expectRefused([&] { const ul::TBuffer<unsigned char> copy(buffer); });
}

TEST(BufferFailures, GrownBufferOfSecrets_FreesTheOldBlock) {
    ul::TCryptBuffer<unsigned char> buffer(10, -1);
    const CallWatch watch;
    buffer.ensureAllocated(10000);
    EXPECT_EQ(watch.count("free"), 1);
}

TEST_F(CipherFailures, WithoutPadding_OfTooLittleOutput_RaiseAnErrorWithBothSizes) {
    shorten("EVP_EncryptFinal", 3);
    shorten("EVP_DecryptFinal", 16);
    expectError("OpenSSL encrypt error: output size does not match expected value",
                {"outSize", "29", "expectedOutSize", "32"},
                [&] { m_cipher.encryptWithoutPadding(key32, "12345678901234567890", 20, m_out, false, iv16.data()); });
    expectError("OpenSSL decrypt error: decrypted size does not match expected value",
                {"outSize", "0", "expectedOutSize", "16"},
                [&] { m_cipher.decryptWithoutPadding(key32, iv16.data(), 16, m_out, false, iv16.data()); });
    EXPECT_EQ(m_watch.count("EVP_CIPHER_CTX_free"), 2);
}

TEST_F(CipherFailures, LastCallsWithoutPadding_GetThePlaceAfterTheResult) {
    m_cipher.encryptWithoutPadding(key32, iv16.data(), 16, m_out, false, iv16.data());
    m_cipher.decryptWithoutPadding(key32, iv16.data(), 16, m_out, false, iv16.data());
    for (const char* call : {"EVP_EncryptFinal", "EVP_DecryptFinal"})
        EXPECT_EQ(m_watch.getCalls(call).at(0).getPointer<unsigned char>(1), m_out.getData() + 16) << call;
}

TEST_F(CipherFailures, InANewThreadWithoutMemory_LeaveItsErrorQueueEmpty) {
    const auto decryptWithDamagedPadding = [&] { m_cipher.decrypt(key32, iv16.data(), 16, m_out, false, iv16.data()); };
    // libcrypto never recovers from a first use without memory.
    EXPECT_THROW(decryptWithDamagedPadding(), ul::CError);
    bool hasFailed = true;
    for (int index = 0; hasFailed; ++index) {
        std::thread([&] {
            const AllocationFailure failure(index);
            EXPECT_THROW(decryptWithDamagedPadding(), std::exception);
            EXPECT_EQ(ERR_peek_error(), 0U);
            hasFailed = failure.hasHappened();
        }).join();
    }
}

TEST_F(CipherFailures, OfDecryptingNoBytes_FollowAnUpdateWithoutANullPointer) {
    EXPECT_THROW(m_cipher.decrypt(key32, nullptr, 0, m_out, false, iv16.data()), ul::CError);
    ASSERT_EQ(m_watch.count("EVP_DecryptUpdate"), 1);
    EXPECT_NE(m_watch.getCalls("EVP_DecryptUpdate")[0].arguments[3], 0);
}

TEST_F(CipherFailures, OfLibcrypto_AreReachedByTheLargestInput) {
    // There is room for the result. Each call fails before it reads so many bytes.
    const std::unique_ptr<unsigned char[]> data(new unsigned char[INT_MAX]);
    const auto expectFailure = [&](const char* call, const char* message, const CipherOperation& operation, int before,
                                   int size) {
        Buffer out;
        out.setUsed(before);
        m_watch.fail(call);
        expectError(message, [&] { (m_cipher.*operation.function)(key32, data.get(), size, out, true, iv16.data()); });
        EXPECT_TRUE(m_watch.getCalls(call).back().fails);
        return out.getAllocated();
    };
    for (const int before : {0, 5, 15})
        EXPECT_EQ(expectFailure("EVP_DecryptUpdate", "OpenSSL decrypt error.", decrypting, before, INT_MAX - 15),
                  INT_MAX);
    expectFailure("EVP_EncryptInit", "OpenSSL encrypt init error.", encrypting, 0, INT_MAX - 16);
    expectFailure("EVP_DecryptInit", "OpenSSL encrypt init error.", decrypting, 0, INT_MAX - 16);
}

TEST_F(CipherFailures, ResultOfAStreamThatGrows_IsNotCopiedWithThePlaintext) {
    const TestKey key(16);
    const std::string text(600000, 'p');
    Buffer encrypted;
    getAnyCipher("bfcbc")->encrypt(key, text.data(), static_cast<int>(text.size()), encrypted, false, nullptr);
    int copied = 0;
    m_watch.before("realloc", [&](const Call& call) {
        void* const block = call.getPointer<void>(0);
        if (block && ::memmem(block, ::malloc_usable_size(block), "pppppppp", 8))
            ++copied;
    });
    sarn::CStreamDecryptor decryptor("bfcbc", key);
    constexpr int first = 40000;
    // These bytes wait. The next call decrypts them before the rest.
    EXPECT_TRUE(decryptor.update({encrypted.getData(), first}).empty());
    EXPECT_GT(decryptor.update({encrypted.getData() + first, encrypted.getUsed() - first}).size(), 500000U);
    EXPECT_EQ(copied, 0);
}

using CipherResult = CipherFailures;

TEST_F(CipherResult, OfEachOperation_IsAllocatedOnceInItsFullSize) {
    restoresItsInput(m_cipher); // the first use allocates more
    const auto expectOneBlock = [&](const CipherOperation& operation, const Bytes& input,
                                    const unsigned char* givenIV) {
        Buffer out;
        const int before = m_watch.count("realloc");
        (m_cipher.*operation.function)(key32, input.data(), static_cast<int>(input.size()), out, false, givenIV);
        EXPECT_EQ(m_watch.count("realloc") - before, 1);
        return toBytes(out);
    };
    const Bytes data = makePattern(48);
    const Bytes padded = expectOneBlock(encrypting, data, nullptr);
    expectOneBlock(encrypting, data, iv16.data());
    expectOneBlock(encryptingUnpadded, makePattern(40), iv16.data());
    expectOneBlock(decrypting, padded, nullptr);
    expectOneBlock(decryptingUnpadded, data, iv16.data());
}

TEST_F(DigestFailures, OfUpdateFinishAndReset_LeaveTheDigestRunning) {
    const ul::P<sarn::IDigest> digest = m_type->createDigest();
    m_watch.fail("MD5_Update");
    EXPECT_THROW(digest->update("abc", 3), ul::CError);
    digest->update("abc", 3);
    for (const auto operation : {&sarn::IDigest::finish, &sarn::IDigest::reset}) {
        m_watch.fail("MD5_Final");
        EXPECT_THROW((digest.get()->*operation)(), ul::CError);
        EXPECT_THROW(digest->getDigestData(), ul::CBadStateError);
    }
    EXPECT_EQ(finish(*digest), md5OfAbc);
}

TEST_F(DigestFailures, OfTheInitOfReset_LeaveTheDigestFinished) {
    const ul::P<sarn::IDigest> digest = m_type->createDigest();
    m_watch.fail("MD5_Init");
    EXPECT_THROW(digest->reset(), ul::CError);
    EXPECT_EQ(getResult(*digest), md5OfNothing);
    digest->reset();
    digest->update("abc", 3);
    EXPECT_EQ(finish(*digest), md5OfAbc);
}

TEST_F(DigestFailuresDeathTest, OfTheEndOfARunningDigest_EndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            ul::P<sarn::IDigest> digest = m_type->createDigest();
            m_watch.fail("MD5_Final");
            digest = nullptr;
        },
        "");
}

TEST_F(DigestFailures, OfAllocations_LeaveADigestThatLoadsAStateUnchanged) {
    for (const char* const id : digestIDs) {
        const ul::P<sarn::IDigest> source = createDigest(id, makePattern(100));
        source->finish();
        const Bytes state = storeState(*source);
        const ul::P<sarn::IDigest> digest = createDigest(id, makePattern(70));
        const Bytes before = storeState(*digest);
        const int failures = failEachAllocation([&] {
            EXPECT_EQ(toHex(storeState(*digest)), toHex(before)) << id;
            loadState(*digest, state);
        });
        EXPECT_EQ(toHex(storeState(*digest)), toHex(state)) << id << ", after " << failures << " failures";
    }
}

TEST_F(DigestFailures, OfAllocations_CannotHappenInUpdateAndFinish) {
    const Bytes input = makePattern(10000);
    for (const char* const id : digestIDs) {
        const ul::P<sarn::IDigest> digest = createDigest(id);
        const AllocationFailure failure(0);
        digest->update(input.data(), 10000);
        digest->finish();
        EXPECT_FALSE(failure.hasHappened()) << id;
    }
}

} // namespace sarn_test
