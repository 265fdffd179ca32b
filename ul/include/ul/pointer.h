// SPDX-License-Identifier: Apache-2.0
/// \file
/// Owning pointers to reference-counted objects.
#pragma once

#include "ul/base.h"

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace ul {

/// Owns one reference to a `T`, or is null. One pointer must not be changed by two threads at once; the object's count
/// is safe from any thread.
template <class T>
class P {
public:
    /// Null.
    constexpr P() noexcept = default;
    /// Null.
    constexpr P(std::nullptr_t) noexcept {}

    /// Adds a reference to `object`, which may be null. The caller keeps its own reference.
    P(T* object) : m_object(object) { addRef(); }
    /// Adds a reference.
    P(const P& other) : P(other.m_object) {}
    /// Takes the reference of `other` and leaves `other` null.
    P(P&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}

    /// Converts to a pointer to a base, an interface or a constant; adds a reference.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    P(const P<U>& other) : P(static_cast<T*>(other.get())) {}
    /// Converts likewise, but takes the reference of `other` and leaves `other` null.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    inline P(P<U>&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}

    /// Drops the reference.
    ~P() {
        if (m_object)
            m_object->release();
    }

    /// Drops the old reference and owns that of `other`.
    P& operator=(P other) noexcept {
        swap(other);
        return *this;
    }

    /// Takes over the creator's reference to `object` without adding one.
    static P adopt(T* object) noexcept {
        P result;
        result.m_object = object;
        return result;
    }

    /// The object, still owned by this pointer, or null.
    T* get() const noexcept { return m_object; }
    /// The object. Requires: this pointer is not null.
    T* operator->() const noexcept { return m_object; }
    /// The object. Requires: this pointer is not null.
    T& operator*() const noexcept { return *m_object; }
    /// Whether this pointer is not null.
    explicit operator bool() const noexcept { return m_object != nullptr; }

    /// Exchanges the two pointers.
    void swap(P& other) noexcept { std::swap(m_object, other.m_object); }

private:
    template <class U>
    friend class P;

    void addRef() {
        if (m_object)
            m_object->addRef();
    }

    T* m_object = nullptr;
};

/// Owns one reference to a constant object.
template <class T>
using PC = P<const T>;

/// Whether both point to the same object.
template <class T, class U>
bool operator==(const P<T>& left, const P<U>& right) noexcept {
    return left.get() == right.get();
}
/// Negation of operator==.
template <class T, class U>
bool operator!=(const P<T>& left, const P<U>& right) noexcept {
    return left.get() != right.get();
}
/// Whether the pointer is null.
template <class T>
bool operator==(const P<T>& left, std::nullptr_t) noexcept {
    return !left.get();
}
/// Whether the pointer is not null.
template <class T>
bool operator!=(const P<T>& left, std::nullptr_t) noexcept {
    return left.get() != nullptr;
}
/// Whether the pointer is null.
template <class T>
bool operator==(std::nullptr_t, const P<T>& right) noexcept {
    return !right.get();
}
/// Whether the pointer is not null.
template <class T>
bool operator!=(std::nullptr_t, const P<T>& right) noexcept {
    return right.get() != nullptr;
}

/// Orders pointers by the addresses of their objects, null first, so that they can be keys.
template <class T>
bool operator<(const P<T>& left, const P<T>& right) noexcept {
    return std::less<>()(left.get(), right.get());
}

/// Creates a `T` with the library's allocator and returns the only reference to it.
/// \throws std::bad_alloc if memory is exhausted, and any error of the constructor; nothing leaks then.
template <class T, class... Args>
P<T> make(Args&&... args) {
    static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__, "the allocator knows no larger alignment");
    return P<T>::adopt(new (CBase::RawNew{}) T(std::forward<Args>(args)...));
}

} // namespace ul

/// Makes pointers keys of unordered containers.
template <class T>
struct std::hash<ul::P<T>> {
    /// Hashes the address of the object.
    std::size_t operator()(const ul::P<T>& pointer) const noexcept { return std::hash<T*>()(pointer.get()); }
};
