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
/// `T` is `char` or `unsigned char`. The block grows geometrically, so appending many pieces takes linear time. Growth
/// leaves the new bytes uninitialised. Owned by one thread at a time.
template <class T>
class TBuffer : public CBase {
    static_assert(sizeof(T) == 1, "sizes are in bytes");

public:
    /// Creates an empty buffer without a block.
    TBuffer() noexcept = default;
    /// Allocates at least `size` bytes, of which the first `used` count as used; -1 means all of them. The bytes are
    /// not initialised. A negative `size` counts as 0, so that the operation that needs the room can report it in its
    /// own words.
    /// \throws CInvalidArgError "invalid used size" if `used` is below -1 or above `size`.
    TBuffer(int size, int used);
    /// Copies the used bytes.
    TBuffer(const TBuffer& other);
    /// Takes the block of `other` and leaves `other` empty.
    TBuffer(TBuffer&& other) noexcept;
    /// Copies the used bytes into this buffer's own block.
    TBuffer& operator=(const TBuffer& other);
    /// Frees this buffer's block, takes that of `other` and leaves `other` empty.
    TBuffer& operator=(TBuffer&& other) noexcept;
    /// Not available: a secret must not end up in a buffer that does not wipe it. To copy one deliberately, pass its
    /// bytes to init().
    template <class Secret, class = std::enable_if_t<std::is_base_of_v<TCryptBuffer<T>, std::decay_t<Secret>>>>
    TBuffer(Secret&&) = delete;
    /// Not available, for the same reason.
    template <class Secret, class = std::enable_if_t<std::is_base_of_v<TCryptBuffer<T>, std::decay_t<Secret>>>>
    TBuffer& operator=(Secret&&) = delete;
    ~TBuffer() override;

    /// Replaces the content with a copy of `size` bytes, which may be part of this buffer.
    /// \throws CInvalidArgError "invalid size" if `size` is negative.
    void init(const T* data, int size);

    /// Inserts a copy of `size` bytes, which may be part of this buffer, at `position`.
    /// \throws CInvalidArgError "invalid position" if `position` is outside [0, getUsed()]; "invalid size" if `size` is
    ///         negative or the sum exceeds 2^31 - 1.
    void insert(int position, const void* data, int size);

    /// Grows the block to at least `size` bytes and keeps the used bytes. Never shrinks it.
    void ensureAllocated(int size) {
        if (size > m_allocated)
            grow(size);
    }

    /// Sets the used size and grows the block if necessary. Bytes that become used are not initialised.
    /// \throws CInvalidArgError "invalid size" if `size` is negative.
    void setUsed(int size);

    /// Increases the used size by `size`, as setUsed() does.
    /// \throws CInvalidArgError "invalid size" if `size` is negative or the sum exceeds 2^31 - 1.
    void addUsed(int size);

    /// The block, or null before the first allocation. Valid until the buffer grows or is destroyed.
    T* getData() noexcept { return m_data; }
    /// Read-only access.
    const T* getData() const noexcept { return m_data; }
    /// Size of the content in bytes.
    int getUsed() const noexcept { return m_used; }
    /// Size of the block in bytes.
    int getAllocated() const noexcept { return m_allocated; }
    /// Whether `address` is inside the block.
    bool contains(const void* address) const noexcept;

protected:
    /// Frees a block of `size` allocated bytes. An override receives every block that this buffer gives up, on growth
    /// too, except one that was moved to another buffer. Requires: an overriding class calls freeBlock() in its
    /// destructor.
    virtual void deleteData(T* data, int size);
    /// Called after `size` bytes have left the used part of the block.
    virtual void discardData(T* data, int size);

    /// Gives up the block through deleteData(). For destructors of classes that override deleteData().
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

/// A buffer for secrets. It overwrites with zeros every block that it gives up and every byte that leaves the used
/// part; the compiler cannot optimise these writes away.
template <class T>
class TCryptBuffer : public TBuffer<T> {
public:
    /// Creates an empty buffer without a block.
    TCryptBuffer() noexcept = default;
    /// Allocates as TBuffer(int, int) does.
    TCryptBuffer(int size, int used);
    /// Copies the used bytes.
    TCryptBuffer(const TCryptBuffer& other);
    /// Takes the block of `other` and leaves `other` empty.
    TCryptBuffer(TCryptBuffer&& other) noexcept;
    /// Copies the used bytes into this buffer's own block.
    TCryptBuffer& operator=(const TCryptBuffer& other);
    /// Wipes and frees this buffer's block, takes that of `other` and leaves `other` empty.
    TCryptBuffer& operator=(TCryptBuffer&& other) noexcept;
    ~TCryptBuffer() override;

protected:
    void deleteData(T* data, int size) override;
    void discardData(T* data, int size) override;
};

// MinGW exports no inline members of a class template, so a host compiles them if it is not optimised.
#if !defined(__MINGW32__) || defined(UL_BUILDING_LIBRARY)
extern template class UL_EXPORT TBuffer<char>;
extern template class UL_EXPORT TBuffer<unsigned char>;
extern template class UL_EXPORT TCryptBuffer<char>;
extern template class UL_EXPORT TCryptBuffer<unsigned char>;
#endif

/// Overwrites `size` bytes with zeros. The compiler cannot optimise these writes away.
UL_EXPORT void wipe(void* data, std::size_t size) noexcept;

} // namespace ul
