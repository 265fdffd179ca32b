// SPDX-License-Identifier: Apache-2.0
// Buffers that cannot grow keep their content, and buffers that have grown free the old block.
#include "failures/call_watch.h"
#include "failures/injection.h"
#include "support/expect.h"

namespace sarn_test {

TEST(BufferFailures, OfAllocations_LeaveTheContent) {
    const Bytes content = makePattern(3);
    const Bytes more = makePattern(10);
    ul::TBuffer<unsigned char> buffer;
    fill(buffer, content);
    const auto expectRefused = [&](auto grow) {
        {
            const AllocationFailure failure(0);
            EXPECT_THROW(grow(), std::bad_alloc);
        }
        EXPECT_EQ(toBytes(buffer), content);
    };
    expectRefused([&] { buffer.ensureAllocated(100); });
    expectRefused([&] { buffer.setUsed(100); });
    expectRefused([&] { buffer.insert(1, more.data(), 10); });
    expectRefused([&] { buffer.init(more.data(), 10); });
    expectRefused([&] { const ul::TBuffer<unsigned char> copy(buffer); });
}

TEST(BufferFailures, GrownBufferOfSecrets_FreesTheOldBlock) {
    ul::TCryptBuffer<unsigned char> buffer(10, -1);
    const CallWatch watch;
    buffer.ensureAllocated(10000);
    EXPECT_EQ(watch.count("free"), 1);
}

} // namespace sarn_test
