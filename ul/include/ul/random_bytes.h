// SPDX-License-Identifier: Apache-2.0
/// \file
/// Random bytes in one line. Header-only.
#pragma once

#include "ul/buffer.h"
#include "ul/random.h"

#include <climits>
#include <cstddef>
#include <type_traits>

namespace ul {

/// Fills an integer, an array of integers or a structure of them with random bytes. See CMTRand::randData().
/// \throws CError "Random bytes are not available.".
template <class T>
void randomize(T& value) {
    static_assert(std::is_trivially_copyable_v<T>, "its bytes must be its value");
    static_assert(!std::is_pointer_v<T>, "the pointer itself would be filled");
    static_assert(!std::is_same_v<std::remove_all_extents_t<T>, bool>, "a bool is not any byte");
    constexpr std::size_t size = sizeof(T);
    static_assert(size <= INT_MAX, "sizes are int");
    CMTRand::getGlobal()->randData(reinterpret_cast<unsigned char*>(&value), static_cast<int>(size));
}

/// Returns `size` random bytes, for example for a key. See CMTRand::randData().
/// \throws CInvalidArgError "invalid size" if `size` is negative; CError "Random bytes are not available.".
inline TCryptBuffer<unsigned char> makeRandomBytes(int size) {
    TCryptBuffer<unsigned char> bytes;
    bytes.setUsed(size);
    CMTRand::getGlobal()->randData(bytes.getData(), size);
    return bytes;
}

} // namespace ul
