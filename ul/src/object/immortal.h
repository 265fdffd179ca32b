// SPDX-License-Identifier: Apache-2.0
// Objects that outlive everybody who may still use them.
#pragma once

#include <new>

namespace ul {

/// Holds a `T` that is never destroyed. For local statics: at the end of the process the destructor of another static
/// object, or a thread that outlives main, may still use them.
template <class T>
class Immortal {
public:
    Immortal() : m_object(new (m_memory) T) {}
    Immortal(const Immortal&) = delete;
    Immortal& operator=(const Immortal&) = delete;

    T& get() noexcept { return *m_object; }

private:
    alignas(T) unsigned char m_memory[sizeof(T)];
    T* m_object;
};

} // namespace ul
