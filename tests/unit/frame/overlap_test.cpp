// SPDX-License-Identifier: Apache-2.0
#include "frame/overlap.h"

#include <gtest/gtest.h>

namespace {

TEST(Overlaps, BytesBesideTheBlock_AreOutside) {
    const ul::TBuffer<unsigned char> buffer(16, -1);
    const unsigned char* const block = buffer.getData();
    EXPECT_TRUE(sarn::overlaps(block, 1, buffer));
    EXPECT_TRUE(sarn::overlaps(block + 15, 1, buffer));
    EXPECT_TRUE(sarn::overlaps(block - 1, 2, buffer));
    EXPECT_FALSE(sarn::overlaps(block + 16, 1, buffer));
    EXPECT_FALSE(sarn::overlaps(block - 1, 1, buffer));
}

TEST(Overlaps, NoBytesOrABufferWithoutABlock_OverlapNothing) {
    const ul::TBuffer<unsigned char> buffer(16, -1);
    EXPECT_FALSE(sarn::overlaps(buffer.getData() + 8, 0, buffer));
    EXPECT_FALSE(sarn::overlaps(buffer.getData(), 1, ul::TBuffer<unsigned char>()));
}

} // namespace
