// SPDX-License-Identifier: Apache-2.0
// The common part of the targets.
#pragma once

#include "support/vectors.h"

#include "ul/buffer.h"
#include "ul/error.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

namespace sarn_fuzz {

using sarn_test::Bytes;
using Buffer = ul::TBuffer<unsigned char>;
using Key = ul::TCryptBuffer<unsigned char>;

/// Ends the process unless the property holds.
inline void require(bool holds, const char* property) {
    if (holds)
        return;
    std::fprintf(stderr, "the property does not hold: %s\n", property);
    std::abort();
}

/// Reads numbers from the start of an input; 0 at its end.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    unsigned take() {
        if (m_size == 0)
            return 0;
        --m_size;
        return *m_data++;
    }
    bool isEmpty() const { return m_size == 0; }
    const std::uint8_t* getData() const { return m_data; }
    int getSize() const { return static_cast<int>(m_size); }
    Bytes toBytes() const { return Bytes(m_data, m_data + m_size); }
    std::string toString() const { return std::string(m_data, m_data + m_size); }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
};

inline Bytes toBytes(const Buffer& buffer) {
    return Bytes(buffer.getData(), buffer.getData() + buffer.getUsed());
}

inline Key makeKey(int size) {
    Key key;
    key.init(sarn_test::makePattern(size).data(), size);
    return key;
}

/// The bytes that `action` writes to a buffer, or none if it raises an error of the library. Other exceptions pass.
template <class Action>
std::optional<Bytes> tryFill(Action action) {
    Buffer out;
    try {
        action(out);
    } catch (const ul::CError&) {
        return std::nullopt;
    }
    return toBytes(out);
}

} // namespace sarn_fuzz
