// SPDX-License-Identifier: Apache-2.0
#include "ul/buffer.h"

#include <gtest/gtest.h>

TEST(TBuffer, SizeConstructor_WithMinusOne_CountsAllBytesAsUsed) {
    const ul::TBuffer<unsigned char> buffer(32, -1);
    EXPECT_EQ(buffer.getUsed(), 32);
    EXPECT_GE(buffer.getAllocated(), 32);
}
