// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/memory_spy.h"

#include "ul/buffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>

namespace sarn_test {

TEST(TBuffer, WithoutMemory_KeepsItsContent) {
    ul::TBuffer<unsigned char> buffer;
    buffer.insert(0, "abc", 3);
    const auto expectRefused = [&buffer](auto grow) {
        const AllocationFailure failure(0);
        EXPECT_THROW(grow(), std::bad_alloc);
        EXPECT_EQ(buffer.getUsed(), 3);
        EXPECT_EQ(std::memcmp(buffer.getData(), "abc", 3), 0);
    };
    expectRefused([&] { buffer.ensureAllocated(100); });
    expectRefused([&] { buffer.setUsed(100); });
    expectRefused([&] { buffer.insert(1, "0123456789", 10); });
    expectRefused([&] { buffer.init(reinterpret_cast<const unsigned char*>("0123456789"), 10); });
    expectRefused([&] { const ul::TBuffer<unsigned char> copy(buffer); });
}

} // namespace sarn_test
