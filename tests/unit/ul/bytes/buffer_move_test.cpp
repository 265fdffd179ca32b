// SPDX-License-Identifier: Apache-2.0
// Buffers that hand their blocks on, and secrets that stay where they are wiped.
#include "support/expect.h"

#include "ul/buffer.h"
#include "ul/pointer.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

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

} // namespace

TEST(TBuffer, Moved_HandsItsBlockOnAndIsEmpty) {
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

TEST(TBuffer, MovedToItself_KeepsItsContent) {
    Buffer buffer = makeBuffer("abc");
    Buffer& same = buffer;
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

TEST(TCryptBuffer, DoesNotBecomeAPlainBufferUnasked) {
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
