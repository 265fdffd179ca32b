// SPDX-License-Identifier: Apache-2.0
/// \file
/// Byte streams.
#pragma once

#include "ul/base.h"

namespace ul {

/// Called by a stream before it writes. If it raises an error, nothing is written.
class UL_EXPORT IWriteBarrier : public virtual IBase {
public:
    ~IWriteBarrier() override;
    /// Called with the `size` bytes that are about to be written.
    virtual void beforeWrite(const void* data, int size) = 0;
};

/// A destination for bytes. Owned by one thread at a time.
class UL_EXPORT IOutStream : public virtual IBase {
public:
    ~IOutStream() override;
    /// Writes `size` bytes, all or none. `barrier`, which may be null, is called first.
    /// \throws CInvalidArgError "invalid size" if `size` is negative; CError if the destination fails.
    virtual void write(const void* data, int size, IWriteBarrier* barrier) = 0;
};

/// A source of bytes. Owned by one thread at a time.
class UL_EXPORT IInStream : public virtual IBase {
public:
    ~IInStream() override;
    /// Reads exactly `size` bytes.
    /// \throws CInvalidArgError "invalid size" if `size` is negative; CError "Unexpected end of stream." with the
    ///         properties "size" and "available" if fewer are left; CError if the source fails.
    virtual void read(void* data, int size) = 0;
    /// Reads up to `size` bytes and returns how many; 0 at the end.
    virtual int readLax(void* data, int size) = 0;
    /// Whether no bytes are left to read.
    virtual bool isEndOfStream() = 0;
};

} // namespace ul
