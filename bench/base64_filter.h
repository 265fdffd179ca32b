// SPDX-License-Identifier: Apache-2.0
// libcrypto's Base64 filter, as raw calls use it.
#pragma once

#include <openssl/bio.h>
#include <openssl/evp.h>

namespace bench {

/// Puts the filter, without line ends, before `end`. The caller frees the chain.
inline BIO* pushFilter(BIO* end) {
    BIO* const filter = BIO_new(BIO_f_base64());
    BIO_set_flags(filter, BIO_FLAGS_BASE64_NO_NL);
    return BIO_push(filter, end);
}

} // namespace bench
