// SPDX-License-Identifier: Apache-2.0
// Streams over memory, values in them, their byte order, and bytes that leave the used part of a buffer of secrets.
// Other tests search the memory for the bytes of freed blocks.
#include "text_buffer.h"

#include "ul/buffer_stream.h"
#include "ul/data_stream.h"
#include "ul/little_endian.h"

namespace sarn_test {

namespace {

/// The bytes that `write` writes.
template <class Write>
Bytes getWritten(Write write) {
    Buffer buffer;
    ul::CBufferStream stream(&buffer, 2.0);
    ul::CDataOutStream out(stream);
    write(out);
    return toBytes(buffer);
}

template <class Number>
constexpr bool isStoredAs(Number number, const std::array<unsigned char, sizeof(Number)>& expected) {
    std::array<unsigned char, sizeof(Number)> bytes{};
    ul::storeLittleEndian(bytes.data(), number);
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
        if (bytes[i] != expected[i])
            return false;
    }
    return ul::loadLittleEndian<Number>(bytes.data()) == number;
}

static_assert(isStoredAs<std::uint8_t>(0xFE, {0xFE}));
static_assert(isStoredAs<std::uint16_t>(0xFEDC, {0xDC, 0xFE}));
static_assert(isStoredAs<std::uint32_t>(0xFEDCBA98, {0x98, 0xBA, 0xDC, 0xFE}));
static_assert(isStoredAs<std::uint64_t>(0xFEDCBA9876543210, {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE}));

constexpr char secret[] = "hunter2-is-the-password";
constexpr int secretSize = sizeof secret - 1;

std::string getSecretBytes(const ul::TCryptBuffer<char>& buffer) {
    return std::string(buffer.getData(), secretSize);
}

std::string withZeros(std::string start) {
    start.resize(secretSize);
    return start;
}

} // namespace

TEST(CBufferInStream, OfABufferWithRoom_EndsAfterTheUsedBytes) {
    Buffer buffer(100, 3);
    ul::CBufferInStream stream(buffer);
    unsigned char bytes[100];
    EXPECT_EQ(stream.readLax(bytes, 100), 3);
    EXPECT_TRUE(stream.isEndOfStream());
}

TEST(CDataOutStream, Integers_AreLittleEndian32Bits_BooleansOneByte_AndRawBytesAsTheyAre) {
    using Out = ul::CDataOutStream;
    EXPECT_EQ(getWritten([](Out& out) { out.writeInt32(0x12345678).writeUInt32(0xFEDCBA98U); }),
              (Bytes{0x78, 0x56, 0x34, 0x12, 0x98, 0xBA, 0xDC, 0xFE}));
    EXPECT_EQ(getWritten([](Out& out) { out.writeInt32(-2); }), (Bytes{0xFE, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(getWritten([](Out& out) { out.writeBool(true).writeBool(false); }), (Bytes{1, 0}));
    EXPECT_EQ(getWritten([](Out& out) { out.write("ab", 2).write(nullptr, 0); }), toBytes("ab"));
}

TEST(CBufferStream, MoreBytesThanAnInt_AreRefusedBeforeTheyAreRead) {
    Buffer buffer;
    fill(buffer, {1});
    ul::CBufferStream stream(&buffer, 2.0);
    EXPECT_THROW(stream.write("x", INT_MAX, nullptr), ul::CInvalidArgError);
    EXPECT_EQ(toBytes(buffer), Bytes{1});
}

TEST(CDataInStream, ReadsWhatWasWritten) {
    const Bytes written = getWritten([](ul::CDataOutStream& out) {
        out.writeInt32(INT_MIN).writeUInt32(UINT_MAX).writeBool(true).writeBool(false).write("xyz", 3);
    });
    ul::CBufferInStream source(written.data(), static_cast<int>(written.size()));
    ul::CDataInStream in(source);
    bool flag = true;
    char text[3];
    EXPECT_EQ(in.readInt32(), INT_MIN);
    EXPECT_EQ(in.readUInt32(), UINT_MAX);
    EXPECT_TRUE(in.readBool());
    in.readBool(flag).read(text, 3);
    EXPECT_FALSE(flag);
    EXPECT_EQ(std::string(text, 3), "xyz");
    EXPECT_TRUE(source.isEndOfStream());
}

TEST(CDataInStream, BooleanOfAnyOtherValue_IsRefused) {
    const Bytes bytes{2, 255};
    ul::CBufferInStream source(bytes.data(), 2);
    ul::CDataInStream in(source);
    bool flag = false;
    expectError("Invalid boolean in data stream.", {"value", "2"}, [&] { in.readBool(); });
    expectError("Invalid boolean in data stream.", {"value", "255"}, [&] { in.readBool(flag); });
}

TEST(CDataInStream, CutOffValue_IsRefused) {
    ul::CBufferInStream source("abc", 3);
    ul::CDataInStream in(source);
    expectError("Unexpected end of stream.", {"size", "4", "available", "3"}, [&] { in.readInt32(); });
    ul::CBufferInStream empty("", 0);
    expectError("Unexpected end of stream.", {"size", "1", "available", "0"},
                [&] { ul::CDataInStream(empty).readBool(); });
}

TEST(CBufferInStream, ReadLax_GivesTheRemainingBytes) {
    ul::CBufferInStream stream("abcde", 5);
    char data[8];
    EXPECT_EQ(stream.readLax(data, 2), 2);
    EXPECT_EQ(stream.getRemaining(), 3);
    EXPECT_FALSE(stream.isEndOfStream());
    EXPECT_EQ(stream.readLax(data, 8), 3);
    EXPECT_EQ(std::string(data, 3), "cde");
    EXPECT_TRUE(stream.isEndOfStream());
    EXPECT_EQ(stream.readLax(data, 8), 0);
}

TEST(CBufferInStream, NoBytes_AreReadFromANullPointerAndToOne) {
    ul::CBufferInStream none(nullptr, 0);
    char data[1];
    EXPECT_EQ(none.readLax(data, 1), 0);
    ul::CBufferInStream stream("abc", 3);
    EXPECT_EQ(stream.readLax(nullptr, 0), 0);
    EXPECT_EQ(stream.getRemaining(), 3);
}

TEST(CBufferInStream, NegativeSizes_AreRefused) {
    ul::CBufferInStream stream("abc", 3);
    char data[1];
    expectInvalidArg("CBufferInStream::read", "invalid size", [&] { stream.read(data, -1); });
    expectInvalidArg("CBufferInStream::readLax", "invalid size", [&] { stream.readLax(data, INT_MIN); });
    EXPECT_EQ(stream.readLax(data, 0), 0);
    EXPECT_EQ(stream.getRemaining(), 3);
    expectInvalidArg("CBufferInStream::CBufferInStream", "invalid size", [] { ul::CBufferInStream("abc", -1); });
}

TEST(CBufferStream, Write_AppendsToTheContentOfTheBuffer) {
    Buffer buffer = makeBuffer("ab");
    ul::CBufferStream stream(&buffer, 2.0);
    stream.write("cd", 2);
    stream.write("", 0);
    EXPECT_EQ(toText(buffer), "abcd");
    expectInvalidArg("CBufferStream::write", "invalid size", [&] { stream.write("x", -1); });
}

TEST(CBufferStream, Write_OfTheBuffersOwnBytes_AppendsThemEvenIfTheBlockMoves) {
    // The buffer overwrites its old blocks when they move.
    SpoilingBuffer buffer;
    ul::CBufferStream stream(&buffer, 2.0);
    ul::CDataOutStream out(stream);
    stream.write("0123456789abcdef", 16);
    for (int size = 16; size < 4000000; size *= 2) {
        out.write(buffer.getData(), size);
        ASSERT_EQ(buffer.getUsed(), 2 * size);
        ASSERT_EQ(std::memcmp(buffer.getData() + size, buffer.getData(), 16), 0);
        ASSERT_EQ(std::memcmp(buffer.getData() + 2 * size - 16, "0123456789abcdef", 16), 0);
    }
}

TEST(CBufferStream, GrowthFactor_DeterminesTheSizeOfABlockThatMustGrow) {
    const auto write = [](int allocated, int used, double factor) {
        Buffer buffer(allocated, used);
        ul::CBufferStream(&buffer, factor).write("0123456789", 10);
        EXPECT_EQ(buffer.getUsed(), used + 10);
        return buffer.getAllocated();
    };
    EXPECT_EQ(write(100, 60, 8.0), 100);
    EXPECT_GE(write(1000, 1000, 8.0), 8000);
    EXPECT_LE(write(1000, 1000, 0.0), 2000);
}

TEST(CBufferStream, Barrier_IsConsultedFirstAndMayRefuse) {
    struct Barrier : ul::CBase, virtual ul::IWriteBarrier {
        void beforeWrite(const void*, int size) override {
            sizes.push_back(size);
            if (size > 3)
                throw std::runtime_error("refused");
        }
        std::vector<int> sizes;
    };
    Barrier barrier;
    Buffer buffer;
    ul::CBufferStream stream(&buffer, 2.0);
    stream.write("abc", 3, &barrier);
    EXPECT_THROW(stream.write("defg", 4, &barrier), std::runtime_error);
    EXPECT_EQ(barrier.sizes, (std::vector<int>{3, 4}));
    EXPECT_EQ(buffer.getUsed(), 3);
}

TEST(LittleEndian, NumbersInMemoryOfAnyAlignment_AreStoredAndLoaded) {
    for (std::size_t offset = 0; offset < 8; ++offset) {
        std::array<unsigned char, 24> memory{};
        ul::storeLittleEndian<std::uint64_t>(memory.data() + offset, 0xFEDCBA9876543210);
        for (std::size_t i = 0; i < memory.size(); ++i) {
            const bool isInside = i >= offset && i < offset + 8;
            EXPECT_EQ(memory[i], isInside ? 0x10 + 0x22 * (i - offset) : 0) << i;
        }
        EXPECT_EQ(ul::loadLittleEndian<std::uint64_t>(memory.data() + offset), 0xFEDCBA9876543210);
    }
}

TEST(TCryptBuffer, ShortenedOrOverwritten_ZeroesTheRest) {
    ul::TCryptBuffer<char> buffer;
    buffer.init(secret, secretSize);
    buffer.setUsed(7);
    EXPECT_EQ(getSecretBytes(buffer), withZeros("hunter2"));
    buffer.init("key", 3);
    EXPECT_EQ(getSecretBytes(buffer), withZeros("key"));
    buffer.setUsed(0);
    EXPECT_EQ(getSecretBytes(buffer), withZeros(""));
}

TEST(Wipe, ZeroesExactlyTheGivenBytes) {
    char bytes[] = "abcdef";
    ul::wipe(bytes + 1, 3);
    EXPECT_EQ(std::string(bytes, 6), std::string("a\0\0\0ef", 6));
    ul::wipe(bytes + 5, 1);
    EXPECT_EQ(std::string(bytes, 6), std::string("a\0\0\0e\0", 6));
    ul::wipe(nullptr, 0);
}

} // namespace sarn_test
