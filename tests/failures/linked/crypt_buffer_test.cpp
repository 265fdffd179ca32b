// SPDX-License-Identifier: Apache-2.0
// Secrets are gone from memory when their buffer gives it back.
#include "support/memory_spy.h"

#include "ul/buffer.h"
#include "ul/pointer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace sarn_test {

namespace {

constexpr const char* secret = "hunter2-is-the-password";
constexpr int secretSize = 23;

using CryptBuffer = ul::TCryptBuffer<char>;

bool isZero(const char* data, int size) {
    return std::all_of(data, data + size, [](char byte) { return byte == 0; });
}

/// Runs `action` and tells how many of the blocks that it freed still held the secret.
template <class Action>
int countFoundSecrets(Action action) {
    const SecretSpy spy(secret);
    action();
    EXPECT_GT(spy.getFreedCount(), 0) << "nothing was freed, nothing was proved";
    return spy.getFoundCount();
}

} // namespace

TEST(TCryptBuffer, PlainBuffer_LeavesItsSecretInFreedMemory) {
    // Shows that the spy sees what it should.
    EXPECT_EQ(countFoundSecrets([] {
                  ul::TBuffer<char> buffer;
                  buffer.init(secret, secretSize);
              }),
              1);
}

TEST(TCryptBuffer, Destroyed_LeavesNoSecret) {
    EXPECT_EQ(countFoundSecrets([] {
                  CryptBuffer buffer;
                  buffer.init(secret, secretSize);
              }),
              0);
}

TEST(TCryptBuffer, ReleasedThroughItsBase_LeavesNoSecret) {
    EXPECT_EQ(countFoundSecrets([] {
                  const ul::P<ul::TBuffer<char>> buffer = ul::make<CryptBuffer>();
                  buffer->init(secret, secretSize);
              }),
              0);
}

TEST(TCryptBuffer, Grown_LeavesNoSecret) {
    EXPECT_EQ(countFoundSecrets([] {
                  CryptBuffer buffer;
                  buffer.init(secret, secretSize);
                  buffer.ensureAllocated(10000);
                  buffer.insert(0, secret, secretSize);
                  for (int i = 0; i < 1000; ++i)
                      buffer.insert(buffer.getUsed(), secret, secretSize);
              }),
              0);
}

TEST(TCryptBuffer, Grown_GivesTheOldBlockBack) {
    CryptBuffer buffer;
    buffer.init(secret, secretSize);
    const SecretSpy spy(secret);
    buffer.ensureAllocated(10000);
    EXPECT_EQ(spy.getFreedCount(), 1);
}

TEST(TCryptBuffer, Assigned_LeavesNoSecret) {
    EXPECT_EQ(countFoundSecrets([] {
                  CryptBuffer buffer;
                  buffer.init(secret, secretSize);
                  CryptBuffer longer(5000, -1);
                  std::fill_n(longer.getData(), 5000, 'x');
                  buffer = longer;
                  CryptBuffer copy(buffer);
                  copy.init(secret, secretSize);
                  copy = CryptBuffer();
              }),
              0);
}

TEST(TCryptBuffer, WithAnExceptionHalfWay_LeavesNoSecret) {
    EXPECT_EQ(countFoundSecrets([] {
                  EXPECT_THROW(
                      {
                          CryptBuffer buffer;
                          buffer.init(secret, secretSize);
                          const CryptBuffer copy(buffer);
                          throw std::runtime_error("half way");
                      },
                      std::runtime_error);
              }),
              0);
}

TEST(TCryptBuffer, Moved_LeavesNoSecret) {
    EXPECT_EQ(countFoundSecrets([] {
                  CryptBuffer buffer;
                  buffer.init(secret, secretSize);
                  CryptBuffer moved(std::move(buffer));
                  CryptBuffer assigned;
                  assigned.init(secret, secretSize);
                  assigned = std::move(moved);
                  EXPECT_EQ(assigned.getUsed(), secretSize);
              }),
              0);
}

TEST(TCryptBuffer, Shortened_ZeroesWhatItNoLongerUses) {
    CryptBuffer buffer;
    buffer.init(secret, secretSize);
    buffer.setUsed(7);
    EXPECT_EQ(std::string(buffer.getData(), 7), "hunter2");
    EXPECT_TRUE(isZero(buffer.getData() + 7, secretSize - 7));
    buffer.setUsed(0);
    EXPECT_TRUE(isZero(buffer.getData(), secretSize));
}

TEST(TCryptBuffer, Overwritten_ZeroesTheRestOfTheOldContent) {
    CryptBuffer buffer;
    buffer.init(secret, secretSize);
    buffer.init("key", 3);
    EXPECT_TRUE(isZero(buffer.getData() + 3, secretSize - 3));
}

TEST(Wipe, ZeroesExactlyTheGivenBytes) {
    char bytes[] = "abcdef";
    ul::wipe(bytes + 1, 3);
    EXPECT_EQ(std::string(bytes, 6), std::string("a\0\0\0ef", 6));
    ul::wipe(nullptr, 0);
}

} // namespace sarn_test
