// SPDX-License-Identifier: Apache-2.0
#include "text_buffer.h"

namespace sarn_test {

TEST(TBuffer, SizeConstructor_SetsTheUsedSize) {
    for (const auto& [size, given, used] :
         {std::array{32, -1, 32}, {32, 5, 5}, {32, 0, 0}, {0, -1, 0}, {-7, -1, 0}, {INT_MIN, 0, 0}}) {
        const Buffer buffer(size, given);
        EXPECT_EQ(buffer.getUsed(), used) << size << " " << given;
        EXPECT_GE(buffer.getAllocated(), size);
        EXPECT_EQ(buffer.getData() == nullptr, size <= 0);
    }
    EXPECT_TRUE(Buffer().getData() == nullptr && Buffer().getUsed() == 0 && Buffer().getAllocated() == 0);
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

TEST(TBuffer, Init_TakesTheBytes_AlsoItsOwn) {
    Buffer buffer = makeBuffer("abcdef");
    buffer.init(buffer.getData() + 2, 3);
    EXPECT_EQ(toText(buffer), "cde");
    buffer.init(reinterpret_cast<const unsigned char*>("x"), 1);
    EXPECT_EQ(toText(buffer), "x");
    buffer.init(nullptr, 0);
    EXPECT_EQ(buffer.getUsed(), 0);
}

TEST(TBuffer, Init_OfAsManyBytesAsThereIsRoomFor_KeepsTheBlock) {
    Buffer buffer;
    buffer.init(nullptr, 0);
    EXPECT_EQ(buffer.getData(), nullptr);
    buffer = makeBuffer("abc");
    const unsigned char* const block = buffer.getData();
    buffer.init(reinterpret_cast<const unsigned char*>("xyz"), 3);
    EXPECT_EQ(buffer.getData(), block);
    EXPECT_EQ(toText(buffer), "xyz");
}

TEST(TBuffer, Insert_AtEveryPlace_MovesTheRest) {
    Buffer buffer(100, 0);
    const unsigned char* const block = buffer.getData();
    buffer.insert(0, "bd", 2);
    buffer.insert(2, "e", 1);
    buffer.insert(0, "a", 1);
    buffer.insert(2, "c", 1);
    EXPECT_EQ(toText(buffer), "abcde");
    buffer.insert(5, nullptr, 0);
    EXPECT_EQ(toText(buffer), "abcde");
    EXPECT_EQ(buffer.getData(), block) << "there was room";
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

TEST(TBuffer, LargestSize_IsReachedByBothWaysToGrow) {
    if constexpr (sizeof(void*) > 4) {
        // Nothing is written, so the system provides no memory for these blocks.
        Buffer set;
        set.setUsed(INT_MAX);
        EXPECT_EQ(set.getUsed(), INT_MAX);
        Buffer added(1, 1);
        added.addUsed(INT_MAX - 1);
        EXPECT_EQ(added.getUsed(), INT_MAX);
    }
}

TEST(TBuffer, InsertOfOwnBytesAtTheEnd_OfAFullBlock_MovesThemToALargerOne) {
    const std::string text = "the old block is given back, and its first bytes are overwritten";
    Buffer buffer(static_cast<int>(text.size()), 0);
    buffer.insert(0, text.data(), static_cast<int>(text.size()));
    ASSERT_EQ(buffer.getUsed(), buffer.getAllocated());
    // The next block prevents growth in place.
    const Buffer next(buffer);
    buffer.insert(buffer.getUsed(), buffer.getData(), buffer.getUsed());
    EXPECT_EQ(toText(buffer), text + text);
    EXPECT_LE(buffer.getUsed(), buffer.getAllocated());
}

TEST(TBuffer, OwnBytesInsertedInTheMiddle_ManyTimes_GrowTheBlockNoMoreThanNeeded) {
    Buffer buffer = makeBuffer("ab");
    for (int i = 0; i < 100; ++i)
        buffer.insert(1, buffer.getData(), 1);
    EXPECT_EQ(toText(buffer), std::string(101, 'a') + "b");
    EXPECT_LE(buffer.getAllocated(), 4 * buffer.getUsed());
}

TEST(TBuffer, ManyAppendedPiecesOrBytes_GrowTheBlockGeometrically) {
    SpoilingBuffer pieces;
    SpoilingBuffer bytes;
    for (int i = 0; i < 100000; ++i) {
        pieces.insert(pieces.getUsed(), "0123456789", 10);
        bytes.setUsed(i);
    }
    EXPECT_EQ(pieces.getUsed(), 1000000);
    EXPECT_LE(pieces.spoiltBlocks, 20);
    EXPECT_LE(bytes.spoiltBlocks, 20);
}

TEST(TBuffer, ClassThatOverridesDeleteDataAlone_SeesEveryBlockThatIsFreed) {
    SpoilingBuffer buffer;
    buffer.setUsed(4);
    EXPECT_EQ(buffer.spoiltBlocks, 0) << "there was no old block";
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

TEST(TBuffer, ThatGaveItsBlockUp_CanBeFilledAgain) {
    SpoilingBuffer buffer;
    buffer.insert(0, "abc", 3);
    buffer.freeBlock();
    EXPECT_TRUE(buffer.getData() == nullptr && buffer.getUsed() == 0 && buffer.getAllocated() == 0);
    buffer.insert(0, "x", 1);
    EXPECT_EQ(toText(buffer), "x");
}

TEST(TBuffer, IsAnObjectThatAPointerOwns) {
    const ul::P<Buffer> buffer = ul::make<ul::TCryptBuffer<unsigned char>>(16, -1);
    EXPECT_EQ(buffer->getUsed(), 16);
    const ul::P<ul::TBuffer<char>> text = ul::make<ul::TBuffer<char>>();
    text->insert(0, "abc", 3);
    EXPECT_EQ(std::string(text->getData(), 3), "abc");
}

TEST(TBuffer, Moved_PassesItsBlockOnAndIsEmpty) {
    static_assert(std::is_nothrow_move_constructible_v<Buffer> && std::is_nothrow_move_assignable_v<Buffer>);
    Buffer source = makeBuffer("abc");
    const unsigned char* const block = source.getData();
    Buffer moved(std::move(source));
    EXPECT_EQ(moved.getData(), block);
    EXPECT_EQ(toText(moved), "abc");
    EXPECT_TRUE(source.getData() == nullptr && source.getUsed() == 0 && source.getAllocated() == 0);
    Buffer assigned = makeBuffer("something longer");
    assigned = std::move(moved);
    EXPECT_EQ(assigned.getData(), block);
    EXPECT_EQ(toText(assigned), "abc");
    source.insert(0, "x", 1);
    EXPECT_EQ(toText(source), "x") << "an empty one may be used again";
}

TEST(TBuffer, AssignedOrMovedToItself_KeepsItsContent) {
    Buffer buffer = makeBuffer("abc");
    Buffer& same = buffer;
    buffer = same;
    EXPECT_EQ(toText(buffer), "abc");
    buffer = std::move(same);
    EXPECT_EQ(toText(buffer), "abc");
}

TEST(TBuffer, MovedObject_KeepsItsOwnReferences) {
    const ul::P<Buffer> source = ul::make<Buffer>(makeBuffer("abc"));
    const ul::P<Buffer> second = source;
    const ul::P<Buffer> moved = ul::make<Buffer>(std::move(*source));
    EXPECT_EQ(toText(*moved), "abc");
    *second = std::move(*moved);
    EXPECT_EQ(toText(*source), "abc");
}

TEST(TCryptBuffer, DoesNotBecomeAPlainBufferImplicitly) {
    using Secret = ul::TCryptBuffer<unsigned char>;
    static_assert(std::is_nothrow_move_constructible_v<Secret> && std::is_nothrow_move_assignable_v<Secret>);
    static_assert(!std::is_constructible_v<Buffer, Secret&> && !std::is_constructible_v<Buffer, const Secret&>);
    static_assert(!std::is_constructible_v<Buffer, Secret> && !std::is_convertible_v<Secret, Buffer>);
    static_assert(!std::is_assignable_v<Buffer&, Secret&> && !std::is_assignable_v<Buffer&, const Secret&>);
    static_assert(!std::is_assignable_v<Buffer&, Secret>);
    static_assert(std::is_convertible_v<Secret&, Buffer&>, "an operation may still fill or read it as a buffer");
    Secret secret(3, -1);
    Buffer plain;
    plain.init(secret.getData(), secret.getUsed());
    EXPECT_EQ(plain.getUsed(), 3);
}

} // namespace sarn_test
