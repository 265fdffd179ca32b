// SPDX-License-Identifier: Apache-2.0
#include "text/narrow_text.h"

#include <cstdint>
#include <cwchar>

#if defined(__SSE2__) && WCHAR_MAX > 0xFFFF
#include <emmintrin.h>
#endif

namespace ul {

namespace {

#if defined(__SSE2__) && WCHAR_MAX > 0xFFFF

/// Narrows whole runs of 16 characters; returns how many characters that were. Decoding Base64 spends a quarter of its
/// time on this, and the compiler's own version takes twice as long: it does not know the saturating packs.
std::size_t narrowRuns(const wchar_t* text, std::size_t size, char* out, std::uint32_t& allBits) noexcept {
    __m128i all = _mm_setzero_si128();
    std::size_t done = 0;
    for (; done + 16 <= size; done += 16) {
        const auto* const source = reinterpret_cast<const __m128i*>(text + done);
        const __m128i first = _mm_loadu_si128(source);
        const __m128i second = _mm_loadu_si128(source + 1);
        const __m128i third = _mm_loadu_si128(source + 2);
        const __m128i fourth = _mm_loadu_si128(source + 3);
        all = _mm_or_si128(all, _mm_or_si128(_mm_or_si128(first, second), _mm_or_si128(third, fourth)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + done),
                         _mm_packus_epi16(_mm_packs_epi32(first, second), _mm_packs_epi32(third, fourth)));
    }
    std::uint32_t lanes[4];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), all);
    allBits |= lanes[0] | lanes[1] | lanes[2] | lanes[3];
    return done;
}

#else

std::size_t narrowRuns(const wchar_t*, std::size_t, char*, std::uint32_t&) noexcept {
    return 0;
}

#endif

} // namespace

bool narrowText(const wchar_t* text, std::size_t size, char* out) noexcept {
    // Bits are gathered instead of each character being asked, which lets the loop take several in a step.
    std::uint32_t allBits = 0;
    for (std::size_t i = narrowRuns(text, size, out, allBits); i < size; ++i) {
        allBits |= static_cast<std::uint32_t>(text[i]);
        out[i] = static_cast<char>(text[i]);
    }
    return allBits <= 0xFF;
}

} // namespace ul
