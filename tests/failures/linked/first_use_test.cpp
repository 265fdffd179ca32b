// SPDX-License-Identifier: Apache-2.0
// Which process-wide objects the encodings and keys create when nothing else was used before.
#include "support/memory_spy.h"

#include "sarn/encoding.h"
#include "sarn/openssl_init.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <exception>
#include <functional>
#include <ostream>

namespace sarn_test {

namespace {

using sarn::COpenSSLInit;

struct FirstUse {
    const char* name;
    std::function<void()> call;
    bool setsUp;
};

/// For messages of failures.
void PrintTo(const FirstUse& use, std::ostream* out) {
    *out << use.name;
}

/// Whether the object that `get` gives was there before: else it takes memory to create it.
template <class Get>
bool isThere(Get get) {
    const AllocationFailure failure(0);
    try {
        get();
    } catch (const std::exception&) {
        // It is created when there is memory again.
    }
    return !failure.hasHappened();
}

class FirstUseDeathTest : public testing::TestWithParam<FirstUse> {};

} // namespace

TEST_P(FirstUseDeathTest, CreatesTheTwoCompanionsOrNothing) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            GetParam().call();
            const bool isRight = isThere(COpenSSLInit::CThreadStuff::get) == GetParam().setsUp &&
                                 isThere(COpenSSLInit::CCleaner::get) == GetParam().setsUp &&
                                 !isThere(COpenSSLInit::get);
            std::exit(isRight ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(All, FirstUseDeathTest,
                         testing::Values(FirstUse{"Base64Encode", [] { sarn::base64Encode("x", 1, true, true); }, true},
                                         FirstUse{"Base64Decode",
                                                  [] {
                                                      ul::TBuffer<unsigned char> out;
                                                      sarn::base64Decode("QUJD", out);
                                                  },
                                                  true},
                                         FirstUse{"DeriveKey",
                                                  [] {
                                                      unsigned char key[20];
                                                      sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("p", 1, "s", 1, 1, 20,
                                                                                             key);
                                                  },
                                                  true},
                                         FirstUse{"CalcHMAC",
                                                  [] {
                                                      ul::TBuffer<unsigned char> out;
                                                      sarn::calcHMAC_SHA1(out, "x", 1, "k", 1);
                                                  },
                                                  false}),
                         [](const auto& use) { return use.param.name; });

} // namespace sarn_test
