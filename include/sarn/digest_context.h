// SPDX-License-Identifier: Apache-2.0
/// \file
/// Traits of libcrypto's hash contexts, used by TDigest_OpenSSL. Hosts do not call them.
#pragma once

#include "ul/little_endian.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace sarn::detail {

/// The data block of a hash context. The last argument selects this form over the next one, which fits SHA-512.
template <class CTX>
constexpr auto getContextBlock(CTX& context, int) -> decltype((context.data)) {
    return context.data;
}
/// The data block of a context in which it is a union.
template <class CTX>
constexpr auto getContextBlock(CTX& context, long) -> decltype((context.u)) {
    return context.u;
}

/// Whether the fill count of a hash context is within its data block.
template <class CTX>
constexpr auto isContextFillInBlock(const CTX& context, int)
    -> decltype(context.num, void(getContextBlock(context, 0)), bool()) {
    return context.num < sizeof getContextBlock(context, 0);
}
/// A context without a fill count or a data block: nothing is known, so the answer is true.
template <class CTX>
constexpr bool isContextFillInBlock(const CTX&, long) {
    return true;
}

/// False only if the context records a result size other than `digestSize`.
template <class CTX>
constexpr auto hasContextDigestSize(const CTX& context, int digestSize, int) -> decltype(context.md_len, bool()) {
    return context.md_len == static_cast<unsigned>(digestSize);
}
/// A context that records no result size.
template <class CTX>
constexpr bool hasContextDigestSize(const CTX&, int, long) {
    return true;
}

/// Converts each integer from `begin` to `end` between the processor's byte order and that of saved states, least
/// significant byte first. The conversion is the same in both directions.
template <class Number>
void exchangeByteOrder(void* begin, const void* end) {
    auto* at = static_cast<unsigned char*>(begin);
    for (; static_cast<const unsigned char*>(end) - at >= std::ptrdiff_t{sizeof(Number)}; at += sizeof(Number)) {
        std::make_unsigned_t<Number> number;
        std::memcpy(&number, at, sizeof number);
        ul::storeLittleEndian(at, number);
    }
}

/// Converts a hash context between memory and saved states: integers, the data block, and integers again.
template <class CTX>
auto exchangeContext(CTX& context, int) -> decltype(context.Nl, context.num, void(getContextBlock(context, 0))) {
    auto& block = getContextBlock(context, 0);
    exchangeByteOrder<decltype(context.Nl)>(&context, &block);
    exchangeByteOrder<decltype(context.num)>(&block + 1, &context + 1);
}
/// A context in any other layout is saved unchanged.
template <class CTX>
void exchangeContext(CTX&, long) {}

/// A view of a hash context of any type, for code that is compiled once for all of them.
struct HashContext {
    /// The context.
    void* data;
    /// Its size in bytes.
    int size;
    /// Converts the context between memory and saved states, in place.
    void (*exchange)(void* data);
    /// Whether an untrusted context is safe for libcrypto, which trusts its fill count and result size when it writes.
    bool (*isUsable)(const void* data, int digestSize);
};

/// Views a context. Requires: the context outlives the view.
template <class CTX>
HashContext viewContext(CTX& context) {
    return {&context, static_cast<int>(sizeof context),
            [](void* data) { exchangeContext(*static_cast<CTX*>(data), 0); },
            [](const void* data, int digestSize) {
                const auto& viewed = *static_cast<const CTX*>(data);
                return isContextFillInBlock(viewed, 0) && hasContextDigestSize(viewed, digestSize, 0);
            }};
}

} // namespace sarn::detail
