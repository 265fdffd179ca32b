// SPDX-License-Identifier: Apache-2.0
// DSA keys that libcrypto cannot sign with.
#pragma once

#include <openssl/evp.h>

namespace sarn {

/// Whether libcrypto may look for a signature for ever: with such a key the first half of each is zero. Newer versions
/// give up by themselves.
bool mayNeverSign(EVP_PKEY* key);

} // namespace sarn
