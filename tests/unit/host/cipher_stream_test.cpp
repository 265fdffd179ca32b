// SPDX-License-Identifier: Apache-2.0
#include "support/cipher_test_data.h"

#include "sarn/host.h"

#include <cstddef>
#include <numeric>
#include <optional>
#include <random>

namespace sarn_test {

namespace {

using Cuts = std::vector<std::size_t>;

void append(Bytes& bytes, ul::CBytes more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

/// Sends `bytes` through a stream in pieces that end at `cuts`.
template <class Stream>
Bytes send(Stream& stream, const Bytes& bytes, Cuts cuts) {
    Bytes result;
    std::size_t start = 0;
    cuts.push_back(bytes.size());
    for (const std::size_t cut : cuts) {
        append(result, stream.update({bytes.data() + start, cut - start}));
        start = cut;
    }
    append(result, stream.finish());
    return result;
}

Cuts makeRandomCuts(std::mt19937& random, const Bytes& bytes) {
    Cuts cuts(random() % 12);
    for (std::size_t& cut : cuts)
        cut = random() % (bytes.size() + 1);
    std::sort(cuts.begin(), cuts.end());
    return cuts;
}

struct CStreams : testing::TestWithParam<std::string> {
    void usePlaintext(int size) {
        plain = makePattern(size);
        encrypted = runCipher(*cipher, encrypting, plain, iv.data());
    }

    void expectSameInPieces(const Cuts& plainCuts, const Cuts& cuts) const {
        sarn::CStreamEncryptor encryptor(cipher, key, iv);
        ASSERT_EQ(send(encryptor, plain, plainCuts), encrypted);
        sarn::CStreamDecryptor decryptor(cipher, key, iv);
        ASSERT_EQ(send(decryptor, encrypted, cuts), plain);
    }

    void expectSameInRandomPieces(std::mt19937& random) const {
        expectSameInPieces(makeRandomCuts(random, plain), makeRandomCuts(random, encrypted));
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

    void expectSameOutcome(const Bytes& bytes) const {
        EXPECT_EQ(describe([&] { return runCipher(*cipher, decrypting, bytes, nullptr); }), describe([&] {
                      sarn::CStreamDecryptor decryptor(cipher, key);
                      return send(decryptor, bytes, {bytes.size() / 3});
                  }))
            << bytes.size() << " bytes";
    }

    const ul::P<sarn::ICipher> cipher = getAnyCipher(GetParam());
    const TestKey key{cipher->getKeySize()};
    const Bytes iv = makePattern(cipher->getIVSize());
    Bytes plain;
    Bytes encrypted;
};

} // namespace

TEST_P(CStreams, InTwoPiecesCutAnywhere_GiveTheBytesOfOneCall) {
    for (int size = 0; size <= 100; ++size) {
        usePlaintext(size);
        for (std::size_t cut = 0; cut <= encrypted.size(); ++cut)
            ASSERT_NO_FATAL_FAILURE(expectSameInPieces({std::min(cut, plain.size())}, {cut}));
    }
}

TEST_P(CStreams, ByteByByte_GiveTheBytesOfOneCall) {
    for (const int size : {0, 1, 15, 16, 17, 100}) {
        usePlaintext(size);
        Cuts cuts(encrypted.size());
        std::iota(cuts.begin(), cuts.end(), 0U);
        expectSameInPieces(Cuts(cuts.begin(), cuts.begin() + size), cuts);
    }
}

TEST_P(CStreams, InRandomPieces_GiveTheBytesOfOneCall) {
    std::mt19937 random(17);
    for (int i = 0; i < 200; ++i) {
        usePlaintext(static_cast<int>(random() % 5000));
        ASSERT_NO_FATAL_FAILURE(expectSameInRandomPieces(random)) << "round " << i;
    }
}

TEST_P(CStreams, InPiecesOfAllMagnitudes_GiveTheBytesOfOneCall) {
    std::mt19937 random(19);
    usePlaintext(3000000);
    constexpr std::size_t batch = 1 << 19;
    const Cuts cases[] = {{batch},         {batch - 1},        {batch + 1},
                          {2 * batch + 8}, {batch, 2 * batch}, {5, batch},
                          {3, batch + 3},  {64, batch + 64},   {5, batch + 5, 2 * batch + 5}};
    for (const Cuts& cuts : cases)
        ASSERT_NO_FATAL_FAILURE(expectSameInPieces(cuts, cuts));
    for (int i = 0; i < 3; ++i)
        ASSERT_NO_FATAL_FAILURE(expectSameInRandomPieces(random));
}

TEST_P(CStreams, WithoutAnIV_DrawOneAndPutItFirstAsOneCallDoes) {
    std::mt19937 random(18);
    Bytes before;
    for (int size = 0; size < 100; ++size) {
        plain = makePattern(size);
        sarn::CStreamEncryptor encryptor(cipher, key);
        encrypted = send(encryptor, plain, makeRandomCuts(random, plain));
        ASSERT_EQ(runCipher(*cipher, decrypting, encrypted, nullptr), plain);
        sarn::CStreamDecryptor decryptor(cipher, key);
        ASSERT_EQ(send(decryptor, encrypted, makeRandomCuts(random, encrypted)), plain);
        const Bytes drawn = cut(encrypted, cipher->getIVSize());
        EXPECT_TRUE(drawn != before || drawn.empty());
        before = drawn;
    }
}

TEST_P(CStreams, CutOrChangedAnywhere_EndAsOneCallDoes) {
    encrypted = runCipher(*cipher, encrypting, makePattern(70), nullptr);
    for (std::size_t size = 0; size <= encrypted.size(); ++size)
        expectSameOutcome(cut(encrypted, static_cast<int>(size)));
    for (std::size_t i = 0; i < encrypted.size(); ++i) {
        Bytes changed = encrypted;
        changed[i] ^= 1;
        expectSameOutcome(changed);
    }
}

TEST_P(CStreams, EncryptorFollowedByADecryptor_NeedNoCopiesOfTheResults) {
    sarn::CStreamEncryptor encryptor(cipher, key);
    sarn::CStreamDecryptor decryptor(cipher, key);
    usePlaintext(1000);
    Bytes result;
    for (int i = 0; i < 10; ++i)
        append(result, decryptor.update(encryptor.update({plain.data() + 100 * i, 100})));
    append(result, decryptor.update(encryptor.finish()));
    append(result, decryptor.finish());
    EXPECT_EQ(result, plain);
}

INSTANTIATE_TEST_SUITE_P(All, CStreams, testing::ValuesIn(getCipherIDs()), [](const auto& test) { return test.param; });

TEST(CStreamDecryptor, OfPiecesOfWholeBlocks_CallsTheCipherOncePerPiece) {
    class CountingCipher : public sarn::CCipher_AES256CBC {
    public:
        void decryptWithoutPadding(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                                   ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override {
            ++calls;
            CCipher_AES256CBC::decryptWithoutPadding(key, data, size, out, append, iv);
        }
        int calls = 0;
    };
    const ul::P<CountingCipher> cipher = ul::make<CountingCipher>();
    sarn::CStreamDecryptor decryptor(cipher, key32, iv16);
    for (int i = 0; i < 10; ++i)
        decryptor.update(makePattern(4096));
    EXPECT_EQ(cipher->calls, 10);
}

TEST(CStreamEncryptor, OfABatch_ReturnsItAtOnce_AndHoldsAnythingLess) {
    for (const bool isSlow : {false, true}) {
        const std::size_t batch = isSlow ? 1 << 19 : 16;
        sarn::CStreamEncryptor encryptor(isSlow ? "bfcbc" : "aes256cbc", TestKey(isSlow ? 16 : 32));
        encryptor.update({}); // the IV
        const Bytes piece = makePattern(static_cast<int>(batch));
        EXPECT_EQ(encryptor.update(piece).size(), batch);
        EXPECT_EQ(encryptor.update({piece.data(), batch - 1}).size(), 0U);
        EXPECT_EQ(encryptor.update({piece.data(), 1}).size(), batch);
    }
}

TEST(CStreamEncryptor, OfAHostsCipherUnderTheNameOfBlowfish_HasBatchesOfItsOwnBlocks) {
    class BlocksOfThree : public sarn::CCipher_Null {
    public:
        ul::String getID() override { return "bfcbc"; }
        int getBlockSize() const override { return 3; }
    };
    sarn::CStreamEncryptor encryptor(ul::make<BlocksOfThree>(), TestKey(0));
    std::string result;
    for (int i = 0; i < 600; ++i)
        result += encryptor.update(std::string(1000, 'x')).asText();
    EXPECT_EQ(result, std::string(600000, 'x'));
}

TEST(CStreamEncryptor, LongStream_NeedsTheMemoryOfOnePiece) {
    const Bytes piece = makePattern(1000);
    sarn::CStreamEncryptor encryptor("aes256cbc", key32);
    encryptor.update(piece);
    const unsigned char* const place = encryptor.update(piece).data();
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(encryptor.update(piece).data(), place);
}

TEST(CStreamEncryptor, KeyOfTheCaller_IsNotNeededAfterConstruction) {
    std::optional<TestKey> key(32);
    sarn::CStreamEncryptor encryptor(getAES256(), *key, iv16);
    key.reset();
    EXPECT_EQ(send(encryptor, toBytes("data"), {2}), runAES256(encrypting, toBytes("data")));
}

TEST(CStreamEncryptor, AfterItHasRefusedAPieceThatIsTooLarge_GoesOn) {
    sarn::CStreamEncryptor encryptor(getAES256(), key32, iv16);
    Bytes result;
    append(result, encryptor.update("only "));
    const auto* const nowhere = reinterpret_cast<const unsigned char*>(std::size_t{4096});
    for (const std::size_t size : {std::size_t{INT_MAX} + 1, std::size_t{INT_MAX}, std::size_t{INT_MAX} - 20})
        expectInvalidArg("CStreamEncryptor::update", "data is too large", [&] { encryptor.update({nowhere, size}); });
    append(result, encryptor.update("copy"));
    append(result, encryptor.finish());
    EXPECT_EQ(result, runAES256(encrypting, toBytes("only copy")));
}

} // namespace sarn_test
