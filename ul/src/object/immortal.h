// SPDX-License-Identifier: Apache-2.0
// Objects that outlive everybody who may still use them.
#pragma once

namespace ul {

/// Holds a `T` that is never destroyed. For local statics: at the end of the process the destructor of another static
/// object, or a thread that outlives main, may still use them.
template <class T>
class Immortal {
public:
    Immortal() : object() {}
    Immortal(const Immortal&) = delete;
    Immortal& operator=(const Immortal&) = delete;
    // Leaves the object alone, as it is the member of a union.
    ~Immortal() {}

    T& get() noexcept { return object; }

private:
    union {
        T object;
    };
};

} // namespace ul
