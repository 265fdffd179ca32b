// SPDX-License-Identifier: Apache-2.0
/// \file
/// What the template of hashes needs to know of libcrypto's contexts. Hosts call none of it.
#pragma once

#include <cstddef>
#include <cstring>

namespace sarn::detail {

/// The block that a hash context fills. The last argument prefers the first form over the second, SHA-512's.
template <class CTX>
constexpr auto getContextBlock(CTX& context, int) -> decltype((context.data)) {
    return context.data;
}
/// The same for a context whose block is a union.
template <class CTX>
constexpr auto getContextBlock(CTX& context, long) -> decltype((context.u)) {
    return context.u;
}

/// Whether the bytes that a hash context believes to be in its block already fit into it.
template <class CTX>
constexpr auto isContextFillInBlock(const CTX& context, int)
    -> decltype(context.num < sizeof getContextBlock(context, 0)) {
    return context.num < sizeof getContextBlock(context, 0);
}
/// The same for a context that has no such number or no block: nothing is known of it.
template <class CTX>
constexpr bool isContextFillInBlock(const CTX&, long) {
    return true;
}

/// Whether a hash context that states its result's length states this one; one that states none does.
template <class CTX>
constexpr auto hasContextDigestSize(const CTX& context, int digestSize, int) -> decltype(context.md_len, bool()) {
    return context.md_len == static_cast<unsigned>(digestSize);
}
/// The same for a context that states none.
template <class CTX>
constexpr bool hasContextDigestSize(const CTX&, int, long) {
    return true;
}

/// Exchanges each whole number from `begin` to `end` between the processor's byte order and that of saved states, the
/// least significant byte first; which way makes no difference.
template <class Number>
void exchangeByteOrder(void* begin, const void* end) {
    auto* at = static_cast<unsigned char*>(begin);
    for (; static_cast<const unsigned char*>(end) - at >= std::ptrdiff_t{sizeof(Number)}; at += sizeof(Number)) {
        Number number;
        std::memcpy(&number, at, sizeof number);
        for (std::size_t i = 0; i < sizeof number; ++i)
            at[i] = static_cast<unsigned char>(number >> 8 * i);
    }
}

/// A hash context between memory and saved states: numbers, the block of bytes, and numbers again.
template <class CTX>
auto exchangeContext(CTX& context, int) -> decltype(context.Nl, context.num, void(getContextBlock(context, 0))) {
    auto& block = getContextBlock(context, 0);
    exchangeByteOrder<decltype(context.Nl)>(&context, &block);
    exchangeByteOrder<decltype(context.num)>(&block + 1, &context + 1);
}
/// The same for a context in an order of its own, which is saved as it lies in memory.
template <class CTX>
void exchangeContext(CTX&, long) {}

/// A hash context of whichever type, for code that is compiled once for all of them.
struct HashContext {
    /// The context.
    void* data;
    /// Its size in bytes.
    int size;
    /// Exchanges it between memory and saved states, in place.
    void (*exchange)(void* data);
    /// Whether libcrypto may be handed it if it came from outside. It writes after the bytes that it believes to be in
    /// the block already, and as long a result as the context states.
    bool (*isUsable)(const void* data, int digestSize);
};

/// Views a context, which must outlive the view.
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
