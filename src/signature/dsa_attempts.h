// SPDX-License-Identifier: Apache-2.0
// DSA keys under which no signature exists.
#pragma once

#include <openssl/evp.h>

namespace sarn {

/// Makes signing with such a DSA key fail where libcrypto 1.1.1 would loop for ever. Newer versions give up themselves.
/// Keys of other kinds are not changed.
/// \throws std::bad_alloc.
void limitAttempts(EVP_PKEY* key);

} // namespace sarn
