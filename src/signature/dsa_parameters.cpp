// SPDX-License-Identifier: Apache-2.0
#include "signature/dsa_parameters.h"

#include <memory>

#include <openssl/bn.h>
#include <openssl/dsa.h>

namespace sarn {

#if OPENSSL_VERSION_NUMBER >= 0x30000000L

bool mayNeverSign(EVP_PKEY*) {
    return false;
}

#else

bool mayNeverSign(EVP_PKEY* key) {
    if (EVP_PKEY_base_id(key) != EVP_PKEY_DSA)
        return false;
    const BIGNUM* p = nullptr;
    const BIGNUM* q = nullptr;
    const BIGNUM* g = nullptr;
    DSA_get0_pqg(EVP_PKEY_get0_DSA(key), &p, &q, &g);
    // The half is (g^k mod p) mod q. Of powers of g that share a factor with p all but a few may be 0 modulo p.
    const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> context(BN_CTX_new(), BN_CTX_free);
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> divisor(BN_new(), BN_free);
    const bool isKnown = p && q && g && context && divisor && BN_gcd(divisor.get(), g, p, context.get());
    return !isKnown || BN_is_one(p) || BN_is_one(q) || !BN_is_one(divisor.get());
}

#endif

} // namespace sarn
