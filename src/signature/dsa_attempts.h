// SPDX-License-Identifier: Apache-2.0
// DSA keys under which no signature exists.
#pragma once

#include <openssl/evp.h>

namespace sarn {

/// Lets signing with a DSA key fail where libcrypto 1.1.1 would look for a signature for ever. Newer versions give up
/// by themselves; keys of other kinds are left as they are. \throws std::bad_alloc
void limitAttempts(EVP_PKEY* key);

} // namespace sarn
