// SPDX-License-Identifier: Apache-2.0
/// \file
/// Streams over memory.
#pragma once

#include "ul/buffer.h"
#include "ul/stream.h"

namespace ul {

/// Appends to a buffer that the caller owns and keeps alive.
class UL_EXPORT CBufferStream : public CBase, public virtual IOutStream {
public:
    /// \param buffer       receives the bytes, after its present content
    /// \param growthFactor when the block must grow, the least new size as a multiple of the used size; at 1 or less
    ///                     only the buffer's own growth applies, as it does when bytes of the buffer itself are written
    CBufferStream(TBuffer<unsigned char>* buffer, double growthFactor);
    ~CBufferStream() override;

    void write(const void* data, int size, IWriteBarrier* barrier = nullptr) override;

private:
    TBuffer<unsigned char>* m_buffer;
    double m_growthFactor;
};

/// Reads memory that the caller owns and keeps alive and unchanged.
class UL_EXPORT CBufferInStream : public CBase, public virtual IInStream {
public:
    /// Reads `size` bytes at `data`.
    /// \throws CInvalidArgError "invalid size" if `size` is negative.
    CBufferInStream(const void* data, int size);
    /// Reads the used bytes of `buffer`.
    explicit CBufferInStream(const TBuffer<unsigned char>& buffer);
    ~CBufferInStream() override;

    void read(void* data, int size) override;
    int readLax(void* data, int size) override;
    bool isEndOfStream() override { return m_size == 0; }
    /// Number of unread bytes.
    int getRemaining() const noexcept { return m_size; }

private:
    const unsigned char* m_data;
    int m_size;
};

} // namespace ul
