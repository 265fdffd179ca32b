// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/expect.h"

#include <cstring>

namespace sarn_test {

inline Buffer makeBuffer(const std::string& text) {
    return makeBuffer(toBytes(text));
}

inline std::string toText(const Buffer& buffer) {
    return toText(toBytes(buffer));
}

/// Overwrites and counts the blocks that it frees.
class SpoilingBuffer : public Buffer {
public:
    ~SpoilingBuffer() override { freeBlock(); }

    using Buffer::freeBlock;

    int spoiltBlocks = 0;

protected:
    void deleteData(unsigned char* data, int size) override {
        ++spoiltBlocks;
        std::memset(data, '#', static_cast<std::size_t>(size));
        Buffer::deleteData(data, size);
    }
};

} // namespace sarn_test
