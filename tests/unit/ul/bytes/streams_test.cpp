// SPDX-License-Identifier: Apache-2.0
// Streams over memory, and numbers in them.
#include "support/expect.h"

#include "ul/buffer_stream.h"
#include "ul/data_stream.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <stdexcept>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;

/// What `write` puts into a stream.
template <class Write>
Bytes getWritten(Write write) {
    Buffer buffer;
    ul::CBufferStream stream(&buffer, 2.0);
    ul::CDataOutStream out(stream);
    write(out);
    return toBytes(buffer);
}

} // namespace

TEST(CDataOutStream, Integers_AreLittleEndian32Bits) {
    EXPECT_EQ(getWritten([](ul::CDataOutStream& out) { out.writeInt32(0x12345678).writeUInt32(0xFEDCBA98U); }),
              (Bytes{0x78, 0x56, 0x34, 0x12, 0x98, 0xBA, 0xDC, 0xFE}));
    EXPECT_EQ(getWritten([](ul::CDataOutStream& out) { out.writeInt32(-2); }), (Bytes{0xFE, 0xFF, 0xFF, 0xFF}));
}

TEST(CDataOutStream, Booleans_AreOneByte) {
    EXPECT_EQ(getWritten([](ul::CDataOutStream& out) { out.writeBool(true).writeBool(false); }), (Bytes{1, 0}));
}

TEST(CDataOutStream, RawBytes_AreWrittenAsTheyAre) {
    EXPECT_EQ(getWritten([](ul::CDataOutStream& out) { out.write("ab", 2).write(nullptr, 0); }), (Bytes{'a', 'b'}));
}

TEST(CDataInStream, ReadsWhatWasWritten) {
    Buffer buffer;
    ul::CBufferStream stream(&buffer, 2.0);
    ul::CDataOutStream(stream).writeInt32(INT_MIN).writeUInt32(UINT_MAX).writeBool(true).writeBool(false).write("xyz",
                                                                                                                3);
    ul::CBufferInStream source(buffer);
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

TEST(CBufferInStream, ReadLax_GivesWhatIsLeft) {
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

TEST(CBufferInStream, NegativeSizes_AreRefused) {
    ul::CBufferInStream stream("abc", 3);
    char data[1];
    expectInvalidArg("CBufferInStream::read", "invalid size", [&] { stream.read(data, -1); });
    expectInvalidArg("CBufferInStream::readLax", "invalid size", [&] { stream.readLax(data, INT_MIN); });
    EXPECT_EQ(stream.readLax(data, 0), 0);
    EXPECT_EQ(stream.getRemaining(), 3);
    expectInvalidArg("CBufferInStream::CBufferInStream", "invalid size", [] { ul::CBufferInStream("abc", -1); });
}

TEST(CBufferStream, Write_AppendsBehindWhatTheBufferHolds) {
    Buffer buffer;
    buffer.insert(0, "ab", 2);
    ul::CBufferStream stream(&buffer, 2.0);
    stream.write("cd", 2);
    stream.write("", 0);
    EXPECT_EQ(toBytes(buffer), toBytes(std::string("abcd")));
    expectInvalidArg("CBufferStream::write", "invalid size", [&] { stream.write("x", -1); });
}

TEST(CBufferStream, Write_OfTheBuffersOwnBytes_AppendsThemThoughTheBlockMoves) {
    // Its old blocks are overwritten, and larger ones may lie elsewhere.
    struct SpoilingBuffer : Buffer {
        ~SpoilingBuffer() override { freeBlock(); }
        void deleteData(unsigned char* data, int size) override {
            std::memset(data, '#', static_cast<std::size_t>(size));
            Buffer::deleteData(data, size);
        }
    };
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

TEST(CBufferStream, Write_WithRoomInTheBlock_LeavesTheBlock) {
    Buffer buffer(100, 60);
    ul::CBufferStream(&buffer, 8.0).write("0123456789", 10);
    EXPECT_EQ(buffer.getAllocated(), 100);
    EXPECT_EQ(buffer.getUsed(), 70);
}

TEST(CBufferStream, GrowthFactor_SaysHowLargeTheBlockBecomes) {
    Buffer buffer(1000, -1);
    ul::CBufferStream(&buffer, 8.0).write("x", 1);
    EXPECT_GE(buffer.getAllocated(), 8000);
    Buffer plain(1000, -1);
    ul::CBufferStream(&plain, 0.0).write("x", 1);
    EXPECT_LE(plain.getAllocated(), 2000);
    EXPECT_EQ(plain.getUsed(), 1001);
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

} // namespace sarn_test
