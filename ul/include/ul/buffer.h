// SPDX-License-Identifier: Apache-2.0
/// \file
/// Byte buffers, plain and wiping.
#pragma once

#include "ul/base.h"

#include <cstddef>

namespace ul {

/// A heap block of bytes with an allocated size and a used size, both in bytes.
///
/// `T` is `char` or `unsigned char`. The block grows geometrically, so that many appended pieces cost linear time, and
/// is not filled on growth. Owned by one thread at a time.
template <class T>
class TBuffer : public CBase {
    static_assert(sizeof(T) == 1, "sizes are in bytes");

public:
    /// An empty buffer without a block.
    TBuffer() noexcept = default;
    /// A buffer with room for at least `size` bytes of which the first `used` count as used; -1 means all of them. The
    /// bytes are not initialised. A negative `size` counts as 0.
    /// \throws CInvalidArgError "invalid used size" if `used` is below -1 or above `size`.
    TBuffer(int size, int used);
    /// Copies the used bytes.
    TBuffer(const TBuffer& other);
    /// Copies the used bytes into this buffer's own block.
    TBuffer& operator=(const TBuffer& other);
    ~TBuffer() override;

    /// Replaces the content with a copy of `size` bytes, which may lie in this buffer.
    /// \throws CInvalidArgError "invalid size" if `size` is negative.
    void init(const T* data, int size);

    /// Inserts a copy of `size` bytes, which may lie in this buffer, at `position`.
    /// \throws CInvalidArgError "invalid position" if `position` lies outside [0, getUsed()], "invalid size" if `size`
    ///         is negative or the sum exceeds 2^31 - 1.
    void insert(int position, const void* data, int size);

    /// Makes the block at least `size` bytes long and keeps the used bytes. Smaller sizes change nothing.
    void ensureAllocated(int size) {
        if (size > m_allocated)
            grow(size);
    }

    /// Sets the used size, growing the block if need be; the bytes themselves are not touched.
    /// \throws CInvalidArgError "invalid size" if `size` is negative.
    void setUsed(int size);

    /// Raises the used size by `size` as setUsed() does.
    /// \throws CInvalidArgError "invalid size" if the sum is negative or exceeds 2^31 - 1.
    void addUsed(int size);

    /// The block; null while nothing has been allocated. Valid until the buffer grows or ends.
    T* getData() noexcept { return m_data; }
    /// The same for a buffer that may only be read.
    const T* getData() const noexcept { return m_data; }
    /// Size in bytes of the content.
    int getUsed() const noexcept { return m_used; }
    /// Size in bytes of the block.
    int getAllocated() const noexcept { return m_allocated; }

protected:
    /// Frees a block of `size` allocated bytes. A class that overrides this overrides resizeData() as well, through
    /// which blocks leave when the buffer grows.
    virtual void deleteData(T* data, int size);
    /// Moves the first `used` bytes of a block of `size` bytes, or of none, to one of `newSize`, which is larger, and
    /// gives the old one back. If there is no memory the old one stays as it was and std::bad_alloc is thrown.
    virtual T* resizeData(T* data, int used, int size, int newSize);
    /// Told of `size` bytes that have just left the used part of the block.
    virtual void discardData(T* data, int size);

    /// Gives the block back by deleteData(). For destructors of classes that override deleteData().
    void freeBlock();

private:
    static T* allocate(int size);
    void grow(int size);
    int getGrownSize(int size) const noexcept;
    void replaceBlock(T* data, int size);

    T* m_data = nullptr;
    int m_allocated = 0;
    int m_used = 0;
};

/// A buffer for secrets: every block that it gives back, and every byte that leaves the used part, is overwritten with
/// zeros by stores that the compiler may not drop.
template <class T>
class TCryptBuffer : public TBuffer<T> {
public:
    TCryptBuffer() noexcept = default;
    using TBuffer<T>::TBuffer;
    TCryptBuffer(const TCryptBuffer&) = default;
    TCryptBuffer& operator=(const TCryptBuffer&) = default;
    ~TCryptBuffer() override;

protected:
    void deleteData(T* data, int size) override;
    T* resizeData(T* data, int used, int size, int newSize) override;
    void discardData(T* data, int size) override;
};

extern template class UL_EXPORT TBuffer<char>;
extern template class UL_EXPORT TBuffer<unsigned char>;
extern template class UL_EXPORT TCryptBuffer<char>;
extern template class UL_EXPORT TCryptBuffer<unsigned char>;

/// Overwrites `size` bytes with zeros by stores that the compiler may not drop.
UL_EXPORT void wipe(void* data, std::size_t size) noexcept;

} // namespace ul
