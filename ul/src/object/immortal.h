// SPDX-License-Identifier: Apache-2.0
// Objects that are never destroyed.
#pragma once

namespace ul {

/// Holds a `T` that is never destroyed. For static local variables: at the end of the process the destructor of another
/// static object, or a thread that outlives main, may still use them.
template <class T>
class Immortal {
public:
    Immortal() : object() {}
    Immortal(const Immortal&) = delete;
    Immortal& operator=(const Immortal&) = delete;
    // Does not destroy the object, which is a union member.
    ~Immortal() {}

    T& get() noexcept { return object; }

private:
    union {
        T object;
    };
};

} // namespace ul
