// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"

#include "ul/buffer.h"
#include "ul/pointer.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;

Buffer makeBuffer(const std::string& text) {
    Buffer buffer;
    fill(buffer, toBytes(text));
    return buffer;
}

std::string toText(const Buffer& buffer) {
    return std::string(buffer.getData(), buffer.getData() + buffer.getUsed());
}

/// Overwrites the blocks that it gives back, and counts them.
class SpoilingBuffer : public Buffer {
public:
    ~SpoilingBuffer() override { freeBlock(); }

    int spoiltBlocks = 0;

protected:
    void deleteData(unsigned char* data, int size) override {
        ++spoiltBlocks;
        std::memset(data, '#', static_cast<std::size_t>(size));
        Buffer::deleteData(data, size);
    }
};

} // namespace

TEST(TBuffer, New_IsEmptyWithoutABlock) {
    const Buffer buffer;
    EXPECT_EQ(buffer.getData(), nullptr);
    EXPECT_EQ(buffer.getUsed(), 0);
    EXPECT_EQ(buffer.getAllocated(), 0);
}

TEST(TBuffer, SizeConstructor_WithMinusOne_CountsAllBytesAsUsed) {
    const Buffer buffer(32, -1);
    EXPECT_EQ(buffer.getUsed(), 32);
    EXPECT_GE(buffer.getAllocated(), 32);
}

TEST(TBuffer, SizeConstructor_WithUsedSize_CountsThatMany) {
    const Buffer buffer(32, 5);
    EXPECT_EQ(buffer.getUsed(), 5);
    EXPECT_GE(buffer.getAllocated(), 32);
    EXPECT_EQ(Buffer(0, -1).getUsed(), 0);
}

TEST(TBuffer, SizeConstructor_WithNegativeSize_IsEmpty) {
    EXPECT_EQ(Buffer(-7, -1).getUsed(), 0);
    EXPECT_EQ(Buffer(INT_MIN, 0).getAllocated(), 0);
}

TEST(TBuffer, SizeConstructor_WithUsedSizeOutside_IsRefused) {
    for (const int used : {-2, 33, INT_MAX, INT_MIN})
        expectInvalidArg("TBuffer::TBuffer", "invalid used size", [used] { const Buffer buffer(32, used); });
}

TEST(TBuffer, Copy_TakesTheUsedBytesOnly) {
    Buffer original = makeBuffer("abcdef");
    original.setUsed(3);
    const Buffer copy(original);
    Buffer assigned = makeBuffer("0123456789");
    assigned = original;
    original.getData()[0] = 'X';
    EXPECT_EQ(toText(copy), "abc");
    EXPECT_EQ(toText(assigned), "abc");
    EXPECT_EQ(copy.getAllocated(), 3);
}

TEST(TBuffer, Assignment_ToItself_ChangesNothing) {
    Buffer buffer = makeBuffer("abc");
    const Buffer& same = buffer;
    buffer = same;
    EXPECT_EQ(toText(buffer), "abc");
}

TEST(TBuffer, Init_WithItsOwnBytes_KeepsThem) {
    Buffer buffer = makeBuffer("abcdef");
    buffer.init(buffer.getData() + 2, 3);
    EXPECT_EQ(toText(buffer), "cde");
    buffer.init(nullptr, 0);
    EXPECT_EQ(buffer.getUsed(), 0);
}

TEST(TBuffer, Insert_AtEveryPlace_MovesTheRestBehind) {
    Buffer buffer;
    buffer.insert(0, "bd", 2);
    buffer.insert(2, "e", 1);
    buffer.insert(0, "a", 1);
    buffer.insert(2, "c", 1);
    EXPECT_EQ(toText(buffer), "abcde");
    buffer.insert(5, nullptr, 0);
    EXPECT_EQ(toText(buffer), "abcde");
}

TEST(TBuffer, Insert_OfItsOwnBytes_WorksWithAndWithoutRoom) {
    Buffer full = makeBuffer("abcd");
    full.insert(1, full.getData(), 4);
    EXPECT_EQ(toText(full), "aabcdbcd");
    Buffer roomy = makeBuffer("abcd");
    roomy.ensureAllocated(100);
    roomy.insert(1, roomy.getData(), 4);
    EXPECT_EQ(toText(roomy), "aabcdbcd");
    roomy.insert(8, roomy.getData() + 6, 2);
    EXPECT_EQ(toText(roomy), "aabcdbcdcd");
}

TEST(TBuffer, BadPositionsAndSizes_AreRefusedAndChangeNothing) {
    Buffer buffer = makeBuffer("abc");
    expectInvalidArg("TBuffer::insert", "invalid position", [&] { buffer.insert(4, "x", 1); });
    expectInvalidArg("TBuffer::insert", "invalid position", [&] { buffer.insert(-1, "x", 1); });
    expectInvalidArg("TBuffer::insert", "invalid size", [&] { buffer.insert(0, "x", -1); });
    expectInvalidArg("TBuffer::insert", "invalid size", [&] { buffer.insert(0, "x", INT_MAX); });
    expectInvalidArg("TBuffer::init", "invalid size", [&] { buffer.init(buffer.getData(), -1); });
    expectInvalidArg("TBuffer::setUsed", "invalid size", [&] { buffer.setUsed(-1); });
    expectInvalidArg("TBuffer::addUsed", "invalid size", [&] { buffer.addUsed(-4); });
    expectInvalidArg("TBuffer::addUsed", "invalid size", [&] { buffer.addUsed(INT_MAX); });
    EXPECT_EQ(toText(buffer), "abc");
}

TEST(TBuffer, EnsureAllocated_KeepsTheUsedBytesAndNeverShrinks) {
    Buffer buffer = makeBuffer("abc");
    buffer.ensureAllocated(1000);
    EXPECT_EQ(toText(buffer), "abc");
    EXPECT_GE(buffer.getAllocated(), 1000);
    const unsigned char* const block = buffer.getData();
    buffer.ensureAllocated(10);
    buffer.ensureAllocated(-1);
    EXPECT_EQ(buffer.getData(), block);
}

TEST(TBuffer, SetUsed_LeavesTheBytesThatTheCallerWrote) {
    Buffer buffer;
    buffer.ensureAllocated(3);
    std::memcpy(buffer.getData(), "abc", 3);
    buffer.setUsed(2);
    EXPECT_EQ(toText(buffer), "ab");
    buffer.addUsed(1);
    EXPECT_EQ(toText(buffer), "abc");
    expectInvalidArg("TBuffer::addUsed", "invalid size", [&] { buffer.addUsed(-1); });
    buffer.setUsed(500);
    EXPECT_GE(buffer.getAllocated(), 500);
}

TEST(TBuffer, InitWithOneByte_WithRoomInTheBlock_TakesTheByte) {
    Buffer buffer = makeBuffer("abc");
    buffer.init(reinterpret_cast<const unsigned char*>("x"), 1);
    EXPECT_EQ(toText(buffer), "x");
}

TEST(TBuffer, Insert_WithRoomInTheBlock_LeavesTheBlock) {
    Buffer buffer(100, 0);
    buffer.insert(0, "ad", 2);
    const unsigned char* const block = buffer.getData();
    buffer.insert(1, "bc", 2);
    EXPECT_EQ(toText(buffer), "abcd");
    EXPECT_EQ(buffer.getData(), block);
}

TEST(TBuffer, InsertOfOwnBytesAtTheEnd_OfAFullBlock_MovesThemToALargerOne) {
    const std::string text = "the old block is given back, and its first bytes are overwritten";
    Buffer buffer(static_cast<int>(text.size()), 0);
    buffer.insert(0, text.data(), static_cast<int>(text.size()));
    ASSERT_EQ(buffer.getUsed(), buffer.getAllocated());
    // The next block keeps it from growing in place.
    const Buffer next(buffer);
    buffer.insert(buffer.getUsed(), buffer.getData(), buffer.getUsed());
    EXPECT_EQ(toText(buffer), text + text);
    EXPECT_LE(buffer.getUsed(), buffer.getAllocated());
}

TEST(TBuffer, OwnBytesInsertedInTheMiddle_ManyTimes_GrowTheBlockAsFarAsTheyNeed) {
    Buffer buffer = makeBuffer("ab");
    for (int i = 0; i < 100; ++i)
        buffer.insert(1, buffer.getData(), 1);
    EXPECT_EQ(toText(buffer), std::string(101, 'a') + "b");
    EXPECT_LE(buffer.getAllocated(), 4 * buffer.getUsed());
}

TEST(TBuffer, ManyAppendedPieces_GrowTheBlockGeometrically) {
    SpoilingBuffer buffer;
    for (int i = 0; i < 100000; ++i)
        buffer.insert(buffer.getUsed(), "0123456789", 10);
    EXPECT_EQ(buffer.getUsed(), 1000000);
    EXPECT_LE(buffer.spoiltBlocks, 20);
}

TEST(TBuffer, EnsureAllocatedBytewise_GrowsTheBlockGeometrically) {
    SpoilingBuffer buffer;
    for (int i = 0; i < 100000; ++i)
        buffer.setUsed(i);
    EXPECT_LE(buffer.spoiltBlocks, 20);
}

TEST(TBuffer, ClassThatOverridesDeleteDataAlone_SeesEveryBlockThatLeaves) {
    SpoilingBuffer buffer;
    buffer.setUsed(4);
    EXPECT_EQ(buffer.spoiltBlocks, 0) << "there was no block before";
    buffer.ensureAllocated(1000);
    EXPECT_EQ(buffer.spoiltBlocks, 1);
    const std::vector<unsigned char> large(5000);
    buffer.init(large.data(), 5000);
    EXPECT_EQ(buffer.spoiltBlocks, 2);
    buffer.insert(0, large.data(), 5000);
    EXPECT_EQ(buffer.spoiltBlocks, 3);
    buffer.insert(5000, buffer.getData(), 5000);
    EXPECT_EQ(buffer.spoiltBlocks, 4);
    buffer = SpoilingBuffer();
    EXPECT_EQ(buffer.spoiltBlocks, 0) << "the count was assigned too";
}

TEST(TBuffer, IsAnObjectThatAPointerOwns) {
    const ul::P<Buffer> buffer = ul::make<ul::TCryptBuffer<unsigned char>>(16, -1);
    EXPECT_EQ(buffer->getUsed(), 16);
    const ul::P<ul::TBuffer<char>> text = ul::make<ul::TBuffer<char>>();
    text->insert(0, "abc", 3);
    EXPECT_EQ(std::string(text->getData(), 3), "abc");
}

} // namespace sarn_test
