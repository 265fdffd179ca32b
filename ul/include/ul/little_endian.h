// SPDX-License-Identifier: Apache-2.0
/// \file
/// Unsigned integers as bytes, least significant byte first. Streams and saved states have this order on every
/// processor; no other code depends on the processor's own. Header-only.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace ul {

// Single expressions, which compilers turn into one instruction where the processor has the same order.

/// \cond
namespace detail {

template <class Number, std::size_t... I>
constexpr void storeBytes(unsigned char* bytes, Number number, std::index_sequence<I...>) noexcept {
    ((bytes[I] = static_cast<unsigned char>(number >> 8 * I)), ...);
}

template <class Number, std::size_t... I>
constexpr Number loadBytes(const unsigned char* bytes, std::index_sequence<I...>) noexcept {
    return static_cast<Number>((... | (static_cast<Number>(bytes[I]) << 8 * I)));
}

} // namespace detail
/// \endcond

/// Writes `number` to the `sizeof(Number)` bytes at `bytes`.
template <class Number>
constexpr void storeLittleEndian(unsigned char* bytes, Number number) noexcept {
    static_assert(std::is_unsigned_v<Number>, "its bits are its value");
    detail::storeBytes(bytes, number, std::make_index_sequence<sizeof(Number)>());
}

/// Reads a number from the `sizeof(Number)` bytes at `bytes`.
template <class Number>
constexpr Number loadLittleEndian(const unsigned char* bytes) noexcept {
    static_assert(std::is_unsigned_v<Number>, "its bits are its value");
    return detail::loadBytes<Number>(bytes, std::make_index_sequence<sizeof(Number)>());
}

} // namespace ul
