// SPDX-License-Identifier: Apache-2.0
#include "ul/base.h"

#include <cassert>
#include <climits>
#include <new>

namespace ul {

IBase::~IBase() = default;

void* CBase::operator new(std::size_t size, const RawNew&) {
    return ::operator new(size);
}

void CBase::operator delete(void* memory, const RawNew&) noexcept {
    ::operator delete(memory);
}

void CBase::operator delete(void* memory) noexcept {
    ::operator delete(memory);
}

CBase::CBase(const CBase& other) noexcept : IBase(other) {}

CBase::~CBase() = default;

void CBase::addRef() const {
    // The caller already holds a reference, which orders this thread after the creation of the object.
    [[maybe_unused]] const int before = m_references.fetch_add(1, std::memory_order_relaxed);
    assert(before > 0 && before < INT_MAX);
}

void CBase::release() const {
    assert(m_references.load(std::memory_order_relaxed) > 0);
    // Nobody can add a reference without holding one, so the last owner needs no atomic subtraction, which takes longer
    // than the rest of this call. Release, so that this thread's writes happen before the destruction; acquire, so that
    // the destroying thread sees the writes of all others.
    if (!isShared())
        m_references.store(0, std::memory_order_relaxed);
    else if (m_references.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    const_cast<CBase*>(this)->deleteThis();
}

void CBase::checkCastAllowed(const std::type_info&) const {}

void CBase::deleteThis() {
    delete this;
}

} // namespace ul
