// SPDX-License-Identifier: Apache-2.0
#include "signature/dsa_attempts.h"

#include <openssl/bn.h>
#include <openssl/dsa.h>

#include <new>

namespace sarn {

#if OPENSSL_VERSION_NUMBER >= 0x30000000L

void limitAttempts(EVP_PKEY*) {}

#else

namespace {

// Each attempt draws a number k, computes g^k modulo p, and fails if half of the signature is then 0. Under a sound key
// that never happens; under others it always does, and the parameters that cause it take too many forms to check. So
// the attempts are counted, at no cost.
constexpr int maxAttempts = 64;

// No standard has ever allowed fewer. With one bit there is no k to draw, and libcrypto never stops drawing.
constexpr int minOrderBits = 160;

thread_local int attemptsLeft = 0;

int computePower(DSA*, BIGNUM* result, const BIGNUM* base, const BIGNUM* exponent, const BIGNUM* modulus,
                 BN_CTX* context, BN_MONT_CTX* form) {
    return attemptsLeft-- > 0 ? BN_mod_exp_mont(result, base, exponent, modulus, context, form) : 0;
}

DSA_SIG* sign(const unsigned char* digest, int size, DSA* key) {
    const BIGNUM* order = nullptr;
    DSA_get0_pqg(key, nullptr, &order, nullptr);
    if (BN_num_bits(order) < minOrderBits)
        return nullptr;
    attemptsLeft = maxAttempts;
    return DSA_meth_get_sign(DSA_OpenSSL())(digest, size, key);
}

/// Wraps libcrypto's method with the two steps above. Never freed, since any key may use it.
DSA_METHOD* createMethod() {
    DSA_METHOD* const method = DSA_meth_dup(DSA_OpenSSL());
    if (!method)
        throw std::bad_alloc();
    DSA_meth_set_sign(method, sign);
    DSA_meth_set_bn_mod_exp(method, computePower);
    return method;
}

} // namespace

void limitAttempts(EVP_PKEY* key) {
    if (EVP_PKEY_base_id(key) != EVP_PKEY_DSA)
        return;
    DSA* const dsa = EVP_PKEY_get0_DSA(key);
    // A host may have set another method in libcrypto, for example of an engine: leave that alone.
    if (DSA_get_method(dsa) != DSA_OpenSSL())
        return;
    static DSA_METHOD* const method = createMethod();
    DSA_set_method(dsa, method);
}

#endif

} // namespace sarn
