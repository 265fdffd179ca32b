// SPDX-License-Identifier: Apache-2.0
/// \file
/// A view of bytes in any container. Header-only.
#pragma once

#include "ul/buffer.h"
#include "ul/error.h"

#include <climits>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ul {

/// A view of bytes that someone else owns, keeps alive and leaves unchanged. As a parameter type it accepts a string, a
/// vector, an array, a span, a TBuffer, or a pointer and a size. It copies nothing.
///
/// A container counts with all its elements, a `const char*` up to its null character. An element must be one byte, so
/// that byte order cannot matter. A writable `char` array is refused: it may hold bytes without a terminating null
/// character, so its size must be given.
class CBytes {
    template <class Container>
    using ElementOf = std::remove_cv_t<std::remove_pointer_t<decltype(std::declval<const Container&>().data())>>;
    template <class T>
    static constexpr bool isByte = sizeof(T) == 1 && std::is_trivially_copyable_v<T> && !std::is_same_v<T, bool>;

public:
    /// No bytes.
    CBytes() noexcept = default;
    /// The `size` bytes at `data`, which may be null if `size` is 0. `size` may be of any integer type.
    /// \throws CInvalidArgError "invalid size" if `size` is negative; "data is too large" if no memory can be so large.
    template <class Size, class = std::enable_if_t<std::is_integral_v<Size> && !std::is_same_v<Size, bool>>>
    CBytes(const void* data, Size size)
        : m_data(static_cast<const unsigned char*>(data)), m_size(static_cast<std::size_t>(size)) {
        if constexpr (std::is_signed_v<Size>) {
            if (size < 0)
                throw CInvalidArgError("CBytes", "invalid size", CProps());
        }
        if constexpr (sizeof(Size) > sizeof(std::size_t)) {
            if (static_cast<Size>(m_size) != size)
                throw CInvalidArgError("CBytes", "data is too large", CProps());
        }
    }
    /// The bytes of a text up to its null character; no bytes if it is null.
    CBytes(const char* text) noexcept : CBytes(text, text ? std::strlen(text) : 0) {}
#ifdef __cpp_char8_t
    /// The bytes of a UTF-8 literal of C++20.
    CBytes(const char8_t* text) noexcept : CBytes(reinterpret_cast<const char*>(text)) {}
#endif
    /// Not available: always a programming error.
    CBytes(std::nullptr_t) = delete;
    /// The elements of a container of bytes.
    template <class Container, class = std::enable_if_t<isByte<ElementOf<Container>>>>
    CBytes(const Container& container) : CBytes(container.data(), container.size()) {}
    /// The used bytes of a buffer.
    template <class T>
    CBytes(const TBuffer<T>& buffer) : CBytes(buffer.getData(), buffer.getUsed()) {}
    /// All bytes of the array.
    template <std::size_t Size>
    CBytes(const unsigned char (&array)[Size]) noexcept : CBytes(static_cast<const void*>(array), Size) {}
    /// Not available: the size of the content is unknown.
    template <std::size_t Size>
    CBytes(char (&array)[Size]) = delete;

    /// The first byte; may be null if there are none.
    const unsigned char* data() const noexcept {
        return m_data;
    }
    /// Number of bytes.
    std::size_t size() const noexcept {
        return m_size;
    }
    /// Whether there are no bytes.
    bool empty() const noexcept {
        return m_size == 0;
    }
    /// The first byte, for range-based loops.
    const unsigned char* begin() const noexcept {
        return m_data;
    }
    /// One past the last byte.
    const unsigned char* end() const noexcept {
        return m_data + m_size;
    }
    /// The bytes as characters, for output to a stream.
    std::string_view asText() const noexcept {
        return {reinterpret_cast<const char*>(m_data), m_size};
    }

    /// The size, for an operation that takes an `int`.
    /// \param where qualified name of the operation, for the error
    /// \throws CInvalidArgError "data is too large" if there are more than 2^31 - 1 bytes.
    int getIntSize(const char* where) const {
        if (m_size > static_cast<std::size_t>(INT_MAX))
            throw CInvalidArgError(where, "data is too large", CProps());
        return static_cast<int>(m_size);
    }

    /// Whether both have the same bytes. The time depends on the sizes only, so it is safe for comparing message
    /// authentication codes.
    friend bool operator==(CBytes left, CBytes right) noexcept {
        if (left.m_size != right.m_size)
            return false;
        unsigned difference = 0;
        for (std::size_t i = 0; i < left.m_size; ++i)
            difference |= static_cast<unsigned>(left.m_data[i] ^ right.m_data[i]);
        return difference == 0;
    }
    /// Negation of operator==.
    friend bool operator!=(CBytes left, CBytes right) noexcept {
        return !(left == right);
    }

private:
    const unsigned char* m_data = nullptr;
    std::size_t m_size = 0;
};

/// Copies `bytes` into a self-wiping buffer, for example a key. The caller wipes the original.
/// \throws CInvalidArgError "data is too large".
inline TCryptBuffer<unsigned char> toCryptBuffer(CBytes bytes) {
    TCryptBuffer<unsigned char> copy;
    copy.init(bytes.data(), bytes.getIntSize("toCryptBuffer"));
    return copy;
}

} // namespace ul
