// SPDX-License-Identifier: Apache-2.0
/// \file
/// Numbers and booleans in a byte stream: an integer is 4 bytes, little-endian; a boolean is one byte, 0 or 1.
#pragma once

#include "ul/stream.h"

namespace ul {

/// Writes values to a stream that the caller owns and keeps alive. It raises the errors of that stream.
class UL_EXPORT CDataOutStream {
public:
    /// Writes to `stream`.
    explicit CDataOutStream(IOutStream& stream) noexcept : m_stream(stream) {}

    /// Writes 4 bytes, little-endian. Returns this object, so that calls chain.
    CDataOutStream& writeInt32(int value);
    /// Writes 4 bytes, little-endian.
    CDataOutStream& writeUInt32(unsigned value);
    /// Writes one byte, 0 or 1.
    CDataOutStream& writeBool(bool value);
    /// Writes `size` bytes unchanged.
    CDataOutStream& write(const void* data, int size);

private:
    IOutStream& m_stream;
};

/// Reads values from a stream that the caller owns and keeps alive. It raises the errors of that stream.
class UL_EXPORT CDataInStream {
public:
    /// Reads from `stream`.
    explicit CDataInStream(IInStream& stream) noexcept : m_stream(stream) {}

    /// Reads 4 bytes, little-endian.
    int readInt32();
    /// Reads 4 bytes, little-endian.
    unsigned readUInt32();
    /// Reads one byte.
    /// \throws CError "Invalid boolean in data stream." with property "value" if the byte is neither 0 nor 1.
    bool readBool();
    /// Reads as the other readBool() does, into `value`. Returns this object, so that calls chain.
    CDataInStream& readBool(bool& value);
    /// Reads exactly `size` bytes unchanged.
    CDataInStream& read(void* data, int size);

private:
    IInStream& m_stream;
};

} // namespace ul
