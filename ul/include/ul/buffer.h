// SPDX-License-Identifier: Apache-2.0
/// \file
/// Byte buffers, plain and wiping.
#pragma once

#include "ul/base.h"

#include <cstddef>
#include <type_traits>

namespace ul {

template <class T>
class TCryptBuffer;

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
    /// bytes are not initialised. A negative `size` counts as 0: the operation that the room is for refuses it in its
    /// own words.
    /// \throws CInvalidArgError "invalid used size" if `used` is below -1 or above `size`.
    TBuffer(int size, int used);
    /// Copies the used bytes.
    TBuffer(const TBuffer& other);
    /// Takes the block of `other`, which is empty from then on.
    TBuffer(TBuffer&& other) noexcept;
    /// Copies the used bytes into this buffer's own block.
    TBuffer& operator=(const TBuffer& other);
    /// Gives this buffer's block back and takes that of `other`, which is empty from then on.
    TBuffer& operator=(TBuffer&& other) noexcept;
    /// Secrets do not get into a buffer that does not wipe them by accident. Who means it says init() with the bytes.
    template <class Secret, class = std::enable_if_t<std::is_base_of_v<TCryptBuffer<T>, std::decay_t<Secret>>>>
    TBuffer(Secret&&) = delete;
    /// The same.
    template <class Secret, class = std::enable_if_t<std::is_base_of_v<TCryptBuffer<T>, std::decay_t<Secret>>>>
    TBuffer& operator=(Secret&&) = delete;
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
    /// \throws CInvalidArgError "invalid size" if `size` is negative or the sum exceeds 2^31 - 1.
    void addUsed(int size);

    /// The block; null while nothing has been allocated. Valid until the buffer grows or ends.
    T* getData() noexcept { return m_data; }
    /// The same for a buffer that may only be read.
    const T* getData() const noexcept { return m_data; }
    /// Size in bytes of the content.
    int getUsed() const noexcept { return m_used; }
    /// Size in bytes of the block.
    int getAllocated() const noexcept { return m_allocated; }
    /// Whether `address` lies in the block.
    bool contains(const void* address) const noexcept;

protected:
    /// Frees a block of `size` allocated bytes. In a class that overrides this every block leaves through it, also when
    /// the buffer grows; such a class calls freeBlock() in its destructor. Only a block that was moved to another
    /// buffer leaves there.
    virtual void deleteData(T* data, int size);
    /// Told of `size` bytes that have just left the used part of the block.
    virtual void discardData(T* data, int size);

    /// Gives the block back by deleteData(). For destructors of classes that override deleteData().
    void freeBlock();

private:
    static T* allocate(int size);
    void grow(int size);
    int getGrownSize(int size) const noexcept;
    void replaceBlock(T* data, int size);
    void takeBlock(TBuffer& other) noexcept;

    T* m_data = nullptr;
    int m_allocated = 0;
    int m_used = 0;
};

/// A buffer for secrets: every block that it gives back, and every byte that leaves the used part, is overwritten with
/// zeros by stores that the compiler may not drop.
template <class T>
class TCryptBuffer : public TBuffer<T> {
public:
    /// An empty buffer without a block.
    TCryptBuffer() noexcept = default;
    /// As TBuffer's.
    TCryptBuffer(int size, int used);
    /// Copies the used bytes.
    TCryptBuffer(const TCryptBuffer& other);
    /// Takes the block of `other`, which is empty from then on.
    TCryptBuffer(TCryptBuffer&& other) noexcept;
    /// Copies the used bytes into this buffer's own block.
    TCryptBuffer& operator=(const TCryptBuffer& other);
    /// Wipes this buffer's block, gives it back and takes that of `other`, which is empty from then on.
    TCryptBuffer& operator=(TCryptBuffer&& other) noexcept;
    ~TCryptBuffer() override;

protected:
    void deleteData(T* data, int size) override;
    void discardData(T* data, int size) override;
};

extern template class UL_EXPORT TBuffer<char>;
extern template class UL_EXPORT TBuffer<unsigned char>;
extern template class UL_EXPORT TCryptBuffer<char>;
extern template class UL_EXPORT TCryptBuffer<unsigned char>;

/// Overwrites `size` bytes with zeros by stores that the compiler may not drop.
UL_EXPORT void wipe(void* data, std::size_t size) noexcept;

} // namespace ul
