// SPDX-License-Identifier: Apache-2.0
// Bytes that leave the used part of a buffer of secrets. Other tests search the memory for the bytes of freed blocks.
#include "ul/buffer.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr char secret[] = "hunter2-is-the-password";
constexpr int secretSize = sizeof secret - 1;

std::string getBytes(const ul::TCryptBuffer<char>& buffer) {
    return std::string(buffer.getData(), secretSize);
}

std::string withZeros(std::string start) {
    start.resize(secretSize);
    return start;
}

} // namespace

TEST(TCryptBuffer, ShortenedOrOverwritten_ZeroesTheRest) {
    ul::TCryptBuffer<char> buffer;
    buffer.init(secret, secretSize);
    buffer.setUsed(7);
    EXPECT_EQ(getBytes(buffer), withZeros("hunter2"));
    buffer.init("key", 3);
    EXPECT_EQ(getBytes(buffer), withZeros("key"));
    buffer.setUsed(0);
    EXPECT_EQ(getBytes(buffer), withZeros(""));
}

TEST(Wipe, ZeroesExactlyTheGivenBytes) {
    char bytes[] = "abcdef";
    ul::wipe(bytes + 1, 3);
    EXPECT_EQ(std::string(bytes, 6), std::string("a\0\0\0ef", 6));
    ul::wipe(nullptr, 0);
}
