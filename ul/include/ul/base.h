// SPDX-License-Identifier: Apache-2.0
/// \file
/// Roots of the object model: reference counting and allocation of every object.
#pragma once

#include "ul/export.h"

#include <atomic>
#include <cstddef>
#include <typeinfo>

namespace ul {

/// Root of every interface. It carries no data, so copying and assigning it do nothing.
///
/// Interfaces derive from it virtually: an object has one root, and one reference count, no matter how many interfaces
/// it implements.
class UL_EXPORT IBase {
public:
    IBase() noexcept = default;
    IBase(const IBase&) noexcept = default;
    /// Does nothing.
    IBase& operator=(const IBase&) noexcept { return *this; }
    virtual ~IBase();

    /// Adds one reference. Requires: the caller already holds one. Safe from any thread.
    virtual void addRef() const = 0;

    /// Drops one reference; dropping the last one destroys the object. Safe from any thread.
    virtual void release() const = 0;

    /// Checks that the object may be passed on as a `target`.
    /// \throws CError if the object forbids it.
    virtual void checkCastAllowed(const std::type_info& target) const = 0;
};

/// Base of every implementation class: one atomic reference count, and allocation by the library.
///
/// A new object has one reference, which its creator owns. Objects are created by ul::make only.
class UL_EXPORT CBase : public virtual IBase {
public:
    /// Tag that selects the library's allocator: `new (CBase::RawNew()) T`.
    struct RawNew {};

    /// Allocates an object.
    /// \throws std::bad_alloc if memory is exhausted.
    static void* operator new(std::size_t size, const RawNew&);
    /// Frees the memory after a constructor has thrown.
    static void operator delete(void* memory, const RawNew&) noexcept;
    /// Frees the memory of a destroyed object.
    static void operator delete(void* memory) noexcept;

    /// Starts with one reference, which the creator owns.
    CBase() noexcept = default;
    /// The copy is a separate object: its count starts at 1.
    CBase(const CBase& other) noexcept;
    /// Does not change either count.
    CBase& operator=(const CBase&) noexcept { return *this; }
    ~CBase() override;

    void addRef() const override;
    void release() const override;
    /// Allows every cast.
    void checkCastAllowed(const std::type_info& target) const override;

protected:
    /// Whether anyone besides the caller, who holds one reference, holds another.
    bool isShared() const noexcept { return m_references.load(std::memory_order_acquire) > 1; }

    /// Destroys the object and frees its memory. release() calls it for the last reference.
    virtual void deleteThis();

private:
    mutable std::atomic<int> m_references{1};
};

} // namespace ul
