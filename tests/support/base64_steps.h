// SPDX-License-Identifier: Apache-2.0
// Decodes Base64 by direct calls of libcrypto's filter.
#pragma once

#include "support/vectors.h"

#include <openssl/bio.h>
#include <openssl/evp.h>

#include <algorithm>
#include <optional>

namespace sarn_test {

/// The result of the documented steps, or none if they refuse the text.
inline std::optional<Bytes> decodeByTheSteps(const std::wstring& text) {
    const auto isSpace = [](wchar_t c) { return c == 32 || c == 9 || c == 10 || c == 13; };
    const int length = static_cast<int>(text.size());
    const int count = length - static_cast<int>(std::count_if(text.begin(), text.end(), isSpace));
    const int missing = (4 - count % 4) % 4;
    if (missing == 3)
        return std::nullopt;
    std::wstring padded = text;
    if (missing > 0) {
        padded.erase(padded.find_last_not_of(L" \t\n\v\f\r") + 1);
        padded.append(static_cast<std::size_t>(missing), L'=');
    }
    std::string latin1;
    for (const wchar_t character : padded)
        latin1 += static_cast<unsigned long>(character) > 0xFF ? '?' : static_cast<char>(character);
    const int expected = count * 6 / 8;
    BIO* const filter = BIO_new(BIO_f_base64());
    BIO* const source = BIO_new_mem_buf(latin1.data(), static_cast<int>(latin1.size()));
    BIO_set_flags(filter, count == length ? BIO_FLAGS_BASE64_NO_NL : 0);
    BIO_push(filter, source);
    Bytes out(static_cast<std::size_t>(expected) + 1);
    const int n = BIO_read(filter, out.data(), expected);
    BIO_free_all(filter);
    // A failed read gives no result, even if fewer than three bytes are expected.
    if (n < 0 || n < expected - 3 || n > expected)
        return std::nullopt;
    out.resize(static_cast<std::size_t>(n));
    return out;
}

} // namespace sarn_test
