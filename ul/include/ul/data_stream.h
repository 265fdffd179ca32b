// SPDX-License-Identifier: Apache-2.0
/// \file
/// Numbers and booleans in a byte stream: 32-bit integers little-endian, a boolean as one byte 0 or 1.
#pragma once

#include "ul/stream.h"

namespace ul {

/// Writes values to a stream that the caller owns and keeps alive. Errors are the stream's own.
class UL_EXPORT CDataOutStream {
public:
    /// Writes to `stream`.
    explicit CDataOutStream(IOutStream& stream) noexcept : m_stream(stream) {}

    /// Writes a signed number, 4 bytes; returns this object, so that calls chain.
    CDataOutStream& writeInt32(int value);
    /// Writes an unsigned number, 4 bytes.
    CDataOutStream& writeUInt32(unsigned value);
    /// Writes a boolean, 1 byte.
    CDataOutStream& writeBool(bool value);
    /// Writes `size` bytes as they are.
    CDataOutStream& write(const void* data, int size);

private:
    IOutStream& m_stream;
};

/// Reads values from a stream that the caller owns and keeps alive. Errors are the stream's own.
class UL_EXPORT CDataInStream {
public:
    /// Reads from `stream`.
    explicit CDataInStream(IInStream& stream) noexcept : m_stream(stream) {}

    /// Reads a signed number, 4 bytes.
    int readInt32();
    /// Reads an unsigned number, 4 bytes.
    unsigned readUInt32();
    /// \throws CError "Invalid boolean in data stream." with property "value" if the byte is neither 0 nor 1.
    bool readBool();
    /// The same into `value`; returns this object, so that calls chain.
    CDataInStream& readBool(bool& value);
    /// Reads exactly `size` bytes as they are.
    CDataInStream& read(void* data, int size);

private:
    IInStream& m_stream;
};

} // namespace ul
