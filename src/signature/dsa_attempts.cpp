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

// Each draws a number k and computes g^k modulo p; it fails if a half of the signature is 0 then. Under a sound key
// that never happens. Under others it always does, and the numbers that lead to it have no end of forms: so the
// attempts are counted, which costs nothing, and the numbers not looked at.
constexpr int maxAttempts = 64;

// No standard ever had fewer. With one bit there is not even a k to draw, and libcrypto draws on.
constexpr int minOrderBits = 160;

thread_local int attemptsLeft = 0;

int computePower(DSA*, BIGNUM* result, const BIGNUM* base, const BIGNUM* exponent, const BIGNUM* modulus,
                 BN_CTX* context, BN_MONT_CTX* form) {
    return attemptsLeft-- > 0 ? BN_mod_exp_mont(result, base, exponent, modulus, context, form) : 0;
}

DSA_SIG* sign(const unsigned char* digest, int size, DSA* key) {
    const BIGNUM* order = nullptr;
    DSA_get0_pqg(key, nullptr, &order, nullptr);
    if (!order || BN_num_bits(order) < minOrderBits)
        return nullptr;
    attemptsLeft = maxAttempts;
    return DSA_meth_get_sign(DSA_OpenSSL())(digest, size, key);
}

/// libcrypto's own method with the two steps above. It lives as long as the process, since any key may use it.
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
    // A host may have given libcrypto another method, of an engine for example: that one stays.
    if (DSA_get_method(dsa) != DSA_OpenSSL())
        return;
    static DSA_METHOD* const method = createMethod();
    DSA_set_method(dsa, method);
}

#endif

} // namespace sarn
