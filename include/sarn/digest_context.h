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

/// Whether libcrypto may be handed a hash context that came from outside. It writes after the bytes that it believes
/// to be in the block already, and as long a result as the context states.
template <class CTX>
constexpr bool isUsableContext(const CTX& context, int digestSize) {
    return context.num < sizeof getContextBlock(context, 0) && hasContextDigestSize(context, digestSize, 0);
}

/// Exchanges each number from `begin` to `end` between the processor's byte order and that of saved states, the least
/// significant byte first; which way makes no difference.
template <class Number>
void exchangeByteOrder(void* begin, const void* end) {
    for (auto* at = static_cast<unsigned char*>(begin); at != end; at += sizeof(Number)) {
        Number number;
        std::memcpy(&number, at, sizeof number);
        for (std::size_t i = 0; i < sizeof number; ++i)
            at[i] = static_cast<unsigned char>(number >> 8 * i);
    }
}

/// A hash context between memory and saved states: numbers, the block of bytes, and numbers again.
template <class CTX>
CTX exchangeContext(CTX context) {
    auto& block = getContextBlock(context, 0);
    exchangeByteOrder<decltype(context.Nl)>(&context, &block);
    exchangeByteOrder<decltype(context.num)>(&block + 1, &context + 1);
    return context;
}

} // namespace sarn::detail
