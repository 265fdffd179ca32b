// SPDX-License-Identifier: Apache-2.0
#include "support/cipher_test_data.h"

#include "sarn/host.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace sarn_test {

namespace {

std::vector<std::string> getCipherIDs() {
    std::vector<std::string> ids = {"null"};
    for (const CipherSizes& sizes : getRegisteredCiphers())
        ids.push_back(sizes.id);
    if (hasIDEA)
        ids.push_back("ideacbc");
    return ids;
}

void append(Bytes& bytes, ul::CBytes more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

/// Sends `bytes` through a stream in pieces that end at `cuts`.
template <class Stream>
Bytes send(Stream& stream, const Bytes& bytes, const std::vector<std::size_t>& cuts) {
    Bytes result;
    std::size_t start = 0;
    for (const std::size_t cut : cuts) {
        append(result, stream.update({bytes.data() + start, cut - start}));
        start = cut;
    }
    append(result, stream.update({bytes.data() + start, bytes.size() - start}));
    append(result, stream.finish());
    return result;
}

std::vector<std::size_t> makeRandomCuts(std::mt19937& random, std::size_t size) {
    std::vector<std::size_t> cuts(random() % 12);
    for (std::size_t& cut : cuts)
        cut = random() % (size + 1);
    std::sort(cuts.begin(), cuts.end());
    return cuts;
}

class CStreams : public testing::TestWithParam<std::string> {
protected:
    Bytes encryptAtOnce(const Bytes& plain) const {
        ul::TBuffer<unsigned char> out;
        cipher->encrypt(key, plain.data(), static_cast<int>(plain.size()), out, false, iv.data());
        return toBytes(out);
    }

    void expectSameInPieces(const Bytes& plain, const std::vector<std::size_t>& plainCuts, const Bytes& encrypted,
                            const std::vector<std::size_t>& cuts) const {
        sarn::CStreamEncryptor encryptor(cipher, key, iv);
        ASSERT_EQ(send(encryptor, plain, plainCuts), encrypted);
        sarn::CStreamDecryptor decryptor(cipher, key, iv);
        ASSERT_EQ(send(decryptor, encrypted, cuts), plain);
    }

    /// The outcome of one call or of a stream: the bytes, or the error.
    template <class Action>
    static std::string describe(Action action) {
        try {
            return "bytes " + toHex(action());
        } catch (const ul::CError& error) {
            return ul::formatError(error);
        }
    }

    void expectSameOutcome(const Bytes& encrypted) const {
        const std::string atOnce = describe([&] {
            ul::TBuffer<unsigned char> out;
            cipher->decrypt(key, encrypted.data(), static_cast<int>(encrypted.size()), out, false, nullptr);
            return toBytes(out);
        });
        EXPECT_EQ(atOnce, describe([&] {
                      sarn::CStreamDecryptor decryptor(cipher, key);
                      return send(decryptor, encrypted, {encrypted.size() / 3});
                  }))
            << encrypted.size() << " bytes";
    }

    const ul::P<sarn::ICipher> cipher = getAnyCipher(GetParam());
    const TestKey key{cipher->getKeySize()};
    const Bytes iv = makePattern(cipher->getIVSize());
};

} // namespace

TEST_P(CStreams, InTwoPiecesCutAnywhere_GiveTheBytesOfOneCall) {
    for (int size = 0; size <= 100; ++size) {
        const Bytes plain = makePattern(size);
        const Bytes encrypted = encryptAtOnce(plain);
        for (std::size_t cut = 0; cut <= encrypted.size(); ++cut)
            ASSERT_NO_FATAL_FAILURE(expectSameInPieces(plain, {std::min(cut, plain.size())}, encrypted, {cut}));
    }
}

TEST_P(CStreams, ByteByByte_GiveTheBytesOfOneCall) {
    for (const int size : {0, 1, 15, 16, 17, 100}) {
        const Bytes plain = makePattern(size);
        const Bytes encrypted = encryptAtOnce(plain);
        std::vector<std::size_t> cuts(encrypted.size());
        for (std::size_t i = 0; i < cuts.size(); ++i)
            cuts[i] = i;
        std::vector<std::size_t> plainCuts(cuts.begin(), cuts.begin() + size);
        expectSameInPieces(plain, plainCuts, encrypted, cuts);
    }
}

TEST_P(CStreams, InRandomPieces_GiveTheBytesOfOneCall) {
    std::mt19937 random(17);
    for (int i = 0; i < 200; ++i) {
        const Bytes plain = makePattern(static_cast<int>(random() % 5000));
        const Bytes encrypted = encryptAtOnce(plain);
        ASSERT_NO_FATAL_FAILURE(expectSameInPieces(plain, makeRandomCuts(random, plain.size()), encrypted,
                                                   makeRandomCuts(random, encrypted.size())))
            << "round " << i;
    }
}

TEST_P(CStreams, InPiecesOfAllMagnitudes_GiveTheBytesOfOneCall) {
    std::mt19937 random(19);
    const Bytes plain = makePattern(3000000);
    const Bytes encrypted = encryptAtOnce(plain);
    constexpr std::size_t batch = 1 << 19;
    const std::vector<std::vector<std::size_t>> cases = {
        {batch},        {batch - 1}, {batch + 1}, {batch, 2 * batch}, {5, batch}, {5, batch + 5, 2 * batch + 5},
        {2 * batch + 8}};
    for (const std::vector<std::size_t>& cuts : cases)
        ASSERT_NO_FATAL_FAILURE(expectSameInPieces(plain, cuts, encrypted, cuts));
    for (int i = 0; i < 3; ++i)
        ASSERT_NO_FATAL_FAILURE(expectSameInPieces(plain, makeRandomCuts(random, plain.size()), encrypted,
                                                   makeRandomCuts(random, encrypted.size())));
}

TEST_P(CStreams, WithoutAnIV_DrawOneAndPutItAheadAsOneCallDoes) {
    std::mt19937 random(18);
    Bytes before;
    for (int size = 0; size < 100; ++size) {
        const Bytes plain = makePattern(size);
        sarn::CStreamEncryptor encryptor(cipher, key);
        const Bytes encrypted = send(encryptor, plain, makeRandomCuts(random, plain.size()));
        ul::TBuffer<unsigned char> atOnce;
        cipher->decrypt(key, encrypted.data(), static_cast<int>(encrypted.size()), atOnce, false, nullptr);
        ASSERT_EQ(toBytes(atOnce), plain);
        sarn::CStreamDecryptor decryptor(cipher, key);
        ASSERT_EQ(send(decryptor, encrypted, makeRandomCuts(random, encrypted.size())), plain);

        const Bytes drawn(encrypted.begin(), encrypted.begin() + cipher->getIVSize());
        EXPECT_TRUE(drawn != before || drawn.empty());
        before = drawn;
    }
}

TEST_P(CStreams, CutOrChangedAnywhere_EndAsOneCallDoes) {
    ul::TBuffer<unsigned char> buffer;
    const Bytes plain = makePattern(70);
    cipher->encrypt(key, plain.data(), 70, buffer, false, nullptr);
    const Bytes encrypted = toBytes(buffer);
    for (std::size_t size = 0; size <= encrypted.size(); ++size)
        expectSameOutcome(Bytes(encrypted.begin(), encrypted.begin() + static_cast<std::ptrdiff_t>(size)));
    for (std::size_t i = 0; i < encrypted.size(); ++i) {
        Bytes changed = encrypted;
        changed[i] ^= 1;
        expectSameOutcome(changed);
    }
}

TEST_P(CStreams, OfBothDirectionsBehindEachOther_NeedNoCopies) {
    sarn::CStreamEncryptor encryptor(cipher, key);
    sarn::CStreamDecryptor decryptor(cipher, key);
    const Bytes plain = makePattern(1000);
    Bytes result;
    for (std::size_t i = 0; i < 10; ++i)
        append(result, decryptor.update(encryptor.update({plain.data() + 100 * i, 100})));
    append(result, decryptor.update(encryptor.finish()));
    append(result, decryptor.finish());
    EXPECT_EQ(result, plain);
}

INSTANTIATE_TEST_SUITE_P(All, CStreams, testing::ValuesIn(getCipherIDs()), [](const auto& test) { return test.param; });

TEST(CStreamDecryptor, OfAStreamCutInsideABlock_RaisesTheDocumentedError) {
    const TestKey key(32);
    const auto encrypted = sarn::encrypt("aes256cbc", key, makePattern(1000));
    sarn::CStreamDecryptor decryptor("aes256cbc", key);
    decryptor.update({encrypted.getData(), encrypted.getUsed() - 5});
    expectError("OpenSSL decrypt error.", [&] { decryptor.finish(); });
}

TEST(CStreamDecryptor, OfLessThanAnIV_RaisesTheDocumentedError) {
    sarn::CStreamDecryptor decryptor("aes256cbc", TestKey(32));
    decryptor.update(makePattern(15));
    expectInvalidArg("COpenSSLCipher::decrypt", "invalid input data size", [&] { decryptor.finish(); });
}

TEST(CStreamEncryptor, MemoryOfALongStream_IsThatOfOnePiece) {
    const TestKey key(32);
    const Bytes piece = makePattern(1000);
    sarn::CStreamEncryptor encryptor("aes256cbc", key);
    encryptor.update(piece);
    const unsigned char* const place = encryptor.update(piece).data();
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(encryptor.update(piece).data(), place);
}

TEST(CStreamEncryptor, KeyOfTheCaller_IsNotNeededAfterTheConstruction) {
    std::optional<TestKey> key(32);
    const Bytes iv = makePattern(16);
    sarn::CStreamEncryptor encryptor(getAnyCipher("aes256cbc"), *key, iv);
    key.reset();
    ul::TBuffer<unsigned char> atOnce;
    getAnyCipher("aes256cbc")->encrypt(TestKey(32), "data", 4, atOnce, false, iv.data());
    EXPECT_EQ(send(encryptor, toBytes("data"), {2}), toBytes(atOnce));
}

TEST(CStreamEncryptor, AfterItRefusedAPieceThatIsTooLarge_GoesOn) {
    const Bytes iv = makePattern(16);
    sarn::CStreamEncryptor encryptor(getAnyCipher("aes256cbc"), TestKey(32), iv);
    Bytes result;
    append(result, encryptor.update("only "));
    const auto* const nowhere = reinterpret_cast<const unsigned char*>(std::size_t{4096});
    for (const std::size_t size : {std::size_t{INT_MAX} + 1, std::size_t{INT_MAX}, std::size_t{INT_MAX} - 20})
        expectInvalidArg("CStreamEncryptor::update", "data is too large", [&] { encryptor.update({nowhere, size}); });
    append(result, encryptor.update("copy"));
    append(result, encryptor.finish());
    ul::TBuffer<unsigned char> atOnce;
    getAnyCipher("aes256cbc")->encrypt(TestKey(32), "only copy", 9, atOnce, false, iv.data());
    EXPECT_EQ(result, toBytes(atOnce));
}

} // namespace sarn_test
