// SPDX-License-Identifier: Apache-2.0
/// \file
/// Roots of the object model: reference counting and allocation of every object.
#pragma once

#include "ul/export.h"

#include <atomic>
#include <cstddef>
#include <typeinfo>

namespace ul {

/// Root of every interface. It carries no data; copying and assigning it do nothing.
///
/// Interfaces derive from it virtually, so that an object has one root, and one reference count, however many
/// interfaces it implements.
class UL_EXPORT IBase {
public:
    /// Nothing to initialise.
    IBase() noexcept = default;
    IBase(const IBase&) noexcept = default;
    /// Leaves both as they are.
    IBase& operator=(const IBase&) noexcept { return *this; }
    virtual ~IBase();

    /// Adds one reference. Safe from any thread that already holds one.
    virtual void addRef() const = 0;

    /// Drops one reference and destroys the object with the last one. Safe from any thread.
    virtual void release() const = 0;

    /// Asks whether the object may be handed out as a `target`.
    /// \throws CError if the object forbids it.
    virtual void checkCastAllowed(const std::type_info& target) const = 0;
};

/// Base of every implementation class: one atomic reference count, and the library's allocator.
///
/// A new object carries one reference, its creator's. ul::make is the one place that creates objects.
class UL_EXPORT CBase : public virtual IBase {
public:
    /// Tag that selects the library's allocator: `new (CBase::RawNew()) T`.
    struct RawNew {};

    /// \throws std::bad_alloc if there is no memory.
    static void* operator new(std::size_t size, const RawNew&);
    /// Gives the memory back when a constructor throws.
    static void operator delete(void* memory, const RawNew&) noexcept;
    /// Gives the memory of an object back.
    static void operator delete(void* memory) noexcept;

    /// An object with one reference, its creator's.
    CBase() noexcept = default;
    /// The copy is an object of its own: its count starts at 1.
    CBase(const CBase& other) noexcept;
    /// Leaves both counts as they are.
    CBase& operator=(const CBase&) noexcept { return *this; }
    ~CBase() override;

    void addRef() const override;
    void release() const override;
    /// Allows every cast.
    void checkCastAllowed(const std::type_info& target) const override;

protected:
    /// Whether anybody but the caller, who has one, holds a reference.
    bool isShared() const noexcept { return m_references.load(std::memory_order_acquire) > 1; }

    /// Called by release() for the last reference; destroys the object and frees its memory.
    virtual void deleteThis();

private:
    mutable std::atomic<int> m_references{1};
};

} // namespace ul
