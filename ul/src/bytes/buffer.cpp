// SPDX-License-Identifier: Apache-2.0
#include "ul/buffer.h"

#include "bytes/block_memory.h"
#include "errors/raise.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <typeinfo>
#include <utility>

namespace ul {

namespace {

void checkSize(const char* where, long long size) {
    if (size < 0 || size > INT_MAX)
        raiseInvalidArg(where, "invalid size");
}

} // namespace

void wipe(void* data, std::size_t size) noexcept {
    // The compiler cannot know that this pointer still points to memset, so it cannot optimise the call away although
    // the block is about to be freed. Volatile stores would not be optimised away either, but they take a byte at a
    // time.
    static void* (*volatile fill)(void*, int, std::size_t) = std::memset;
    if (size > 0)
        fill(data, 0, size);
}

template <class T>
TBuffer<T>::TBuffer(int size, int used) {
    const int allocated = std::max(size, 0);
    if (used < -1 || used > allocated)
        raiseInvalidArg("TBuffer::TBuffer", "invalid used size");
    if (allocated > 0)
        m_data = allocate(allocated);
    m_allocated = allocated;
    m_used = used == -1 ? allocated : used;
}

template <class T>
TBuffer<T>::TBuffer(const TBuffer& other) : CBase(other) {
    init(other.m_data, other.m_used);
}

template <class T>
TBuffer<T>::TBuffer(TBuffer&& other) noexcept : CBase(other) {
    takeBlock(other);
}

template <class T>
TBuffer<T>& TBuffer<T>::operator=(const TBuffer& other) {
    if (this != &other)
        init(other.m_data, other.m_used);
    return *this;
}

template <class T>
TBuffer<T>& TBuffer<T>::operator=(TBuffer&& other) noexcept {
    if (this != &other) {
        freeBlock();
        takeBlock(other);
    }
    return *this;
}

template <class T>
TBuffer<T>::~TBuffer() {
    freeBlock();
}

template <class T>
void TBuffer<T>::init(const T* data, int size) {
    checkSize("TBuffer::init", size);
    // More bytes than the old block holds are not part of it, so it can go first.
    if (size > m_allocated)
        replaceBlock(allocate(size), size);
    if (size > 0)
        std::memmove(m_data, data, static_cast<std::size_t>(size));
    setUsed(size);
}

template <class T>
void TBuffer<T>::insert(int position, const void* data, int size) {
    if (position < 0 || position > m_used)
        raiseInvalidArg("TBuffer::insert", "invalid position");
    checkSize("TBuffer::insert", size);
    checkSize("TBuffer::insert", static_cast<long long>(m_used) + size);
    if (size == 0)
        return;
    const auto count = static_cast<std::size_t>(size);
    const auto tail = static_cast<std::size_t>(m_used - position);
    const T* const source = static_cast<const T*>(data);
    const bool isOwn = contains(source);
    if (!isOwn)
        ensureAllocated(m_used + size);
    const bool mustGrow = m_used + size > m_allocated;
    if (mustGrow || (isOwn && tail > 0)) {
        // Keep the old block until its bytes and the inserted ones, which may be part of it, have been copied.
        const int allocated = mustGrow ? getGrownSize(m_used + size) : m_allocated;
        T* const block = allocate(allocated);
        std::copy_n(m_data, position, block);
        std::copy_n(source, count, block + position);
        std::copy_n(m_data + position, tail, block + position + size);
        replaceBlock(block, allocated);
    } else {
        std::memmove(m_data + position + size, m_data + position, tail);
        std::memmove(m_data + position, source, count);
    }
    m_used += size;
}

template <class T>
void TBuffer<T>::setUsed(int size) {
    if (size < 0 || size > m_allocated) {
        checkSize("TBuffer::setUsed", size);
        grow(size);
    }
    const int before = std::exchange(m_used, size);
    if (size < before)
        discardData(m_data + size, before - size);
}

template <class T>
void TBuffer<T>::addUsed(int size) {
    if (size < 0 || size > INT_MAX - m_used)
        raiseInvalidArg("TBuffer::addUsed", "invalid size");
    setUsed(m_used + size);
}

template <class T>
bool TBuffer<T>::contains(const void* address) const noexcept {
    const T* const byte = static_cast<const T*>(address);
    return !std::less<>()(byte, m_data) && std::less<>()(byte, m_data + m_allocated);
}

template <class T>
void TBuffer<T>::deleteData(T* data, int) {
    freeMemory(data);
}

template <class T>
void TBuffer<T>::discardData(T*, int) {}

template <class T>
void TBuffer<T>::freeBlock() {
    if (m_data)
        deleteData(m_data, m_allocated);
    m_data = nullptr;
    m_allocated = 0;
    m_used = 0;
}

template <class T>
T* TBuffer<T>::allocate(int size) {
    return static_cast<T*>(allocateMemory(size));
}

template <class T>
void TBuffer<T>::grow(int size) {
    const int allocated = getGrownSize(size);
    if (typeid(*this) == typeid(TBuffer)) {
        // deleteData() is not overridden here, and the C library may extend the block without copying.
        m_data = static_cast<T*>(resizeMemory(m_data, allocated));
        m_allocated = allocated;
        return;
    }
    T* const block = allocate(allocated);
    std::copy_n(m_data, m_used, block);
    replaceBlock(block, allocated);
}

template <class T>
int TBuffer<T>::getGrownSize(int size) const noexcept {
    const long long doubled = 2LL * m_allocated;
    return static_cast<int>(std::clamp<long long>(doubled, size, INT_MAX));
}

template <class T>
void TBuffer<T>::replaceBlock(T* data, int size) {
    if (m_data)
        deleteData(m_data, m_allocated);
    m_data = data;
    m_allocated = size;
}

template <class T>
void TBuffer<T>::takeBlock(TBuffer& other) noexcept {
    m_data = std::exchange(other.m_data, nullptr);
    m_allocated = std::exchange(other.m_allocated, 0);
    m_used = std::exchange(other.m_used, 0);
}

template <class T>
TCryptBuffer<T>::TCryptBuffer(int size, int used) : TBuffer<T>(size, used) {}

// The casts are to a base, to which a secret does not convert implicitly.
template <class T>
TCryptBuffer<T>::TCryptBuffer(const TCryptBuffer& other) : TBuffer<T>(static_cast<const TBuffer<T>&>(other)) {}

template <class T>
TCryptBuffer<T>::TCryptBuffer(TCryptBuffer&& other) noexcept : TBuffer<T>(static_cast<TBuffer<T>&&>(other)) {}

template <class T>
TCryptBuffer<T>& TCryptBuffer<T>::operator=(const TCryptBuffer& other) {
    TBuffer<T>::operator=(static_cast<const TBuffer<T>&>(other));
    return *this;
}

template <class T>
TCryptBuffer<T>& TCryptBuffer<T>::operator=(TCryptBuffer&& other) noexcept {
    TBuffer<T>::operator=(static_cast<TBuffer<T>&&>(other));
    return *this;
}

template <class T>
TCryptBuffer<T>::~TCryptBuffer() {
    // In the base's destructor its own deleteData() would run, which does not wipe.
    this->freeBlock();
}

template <class T>
void TCryptBuffer<T>::deleteData(T* data, int size) {
    wipe(data, static_cast<std::size_t>(size));
    TBuffer<T>::deleteData(data, size);
}

template <class T>
void TCryptBuffer<T>::discardData(T* data, int size) {
    wipe(data, static_cast<std::size_t>(size));
}

template class TBuffer<char>;
template class TBuffer<unsigned char>;
template class TCryptBuffer<char>;
template class TCryptBuffer<unsigned char>;

} // namespace ul
