// SPDX-License-Identifier: Apache-2.0
// libcrypto's descriptions of the ciphers that the library offers.
#pragma once

#include <openssl/evp.h>

namespace sarn {

// Each stays valid for the life of the process. From libcrypto 3 on they are fetched once, from a library context of
// our own, which has the legacy provider whatever providers the host has loaded into its own.
const EVP_CIPHER* getAES256CBC();
const EVP_CIPHER* getAES128CBC();
const EVP_CIPHER* getBlowfishCBC();
const EVP_CIPHER* getCast128CBC();
/// \throws ul::CError if libcrypto was built without it
const EVP_CIPHER* getIDEACBC();

} // namespace sarn
