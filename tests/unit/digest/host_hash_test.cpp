// SPDX-License-Identifier: Apache-2.0
// Hashes with contexts of a host, and their saved states.
#define OPENSSL_SUPPRESS_DEPRECATED // libcrypto 3 deprecates these functions

#include "support/digest_test_data.h"

#include <openssl/sha.h>

namespace sarn_test {

namespace {

/// A context that has neither a block nor a count.
struct SumContext {
    std::uint64_t sum;
};

int initSum(SumContext* context) {
    context->sum = 0;
    return 1;
}

int updateSum(SumContext* context, const void* data, std::size_t size) {
    if (!data)
        return 0;
    for (std::size_t i = 0; i < size; ++i)
        context->sum += static_cast<const unsigned char*>(data)[i];
    return 1;
}

int finalSum(unsigned char* out, SumContext* context) {
    for (int i = 0; i < 8; ++i)
        out[i] = static_cast<unsigned char>(context->sum >> 8 * i);
    return 1;
}

/// A context with members in another order than in those of libcrypto. It keeps the last bytes.
struct TailContext {
    unsigned num;
    unsigned char data[8];
};

int initTail(TailContext* context) {
    *context = TailContext{};
    return 1;
}

int updateTail(TailContext* context, const void* data, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        context->data[context->num] = static_cast<const unsigned char*>(data)[i];
        context->num = (context->num + 1) % 8;
    }
    return 1;
}

int finalTail(unsigned char* out, TailContext* context) {
    std::copy_n(context->data, 8, out);
    return 1;
}

using Digest_Sum = sarn::TDigest_OpenSSL<SumContext, 8, initSum, updateSum, finalSum>;
using Digest_Tail = sarn::TDigest_OpenSSL<TailContext, 8, initTail, updateTail, finalTail>;
using Digest_SHA512 = sarn::TDigest_OpenSSL<SHA512_CTX, 64, SHA512_Init, SHA512_Update, SHA512_Final>;

template <class Digest>
Bytes getStateOfAbc() {
    // The digest may get this memory next and must not save its old content.
    makePattern(static_cast<int>(sizeof(Digest)));
    const ul::P<Digest> digest = ul::make<Digest>(nullptr);
    digest->update("abc", 3);
    return storeState(*digest);
}

/// The result of "abcdef" if the second half is fed to a digest with the state of the first.
template <class Digest>
std::string resumeWithDef() {
    const ul::P<Digest> digest = ul::make<Digest>(nullptr);
    loadState(*digest, getStateOfAbc<Digest>());
    digest->update("def", 3);
    return toHex(finish(*digest));
}

template <class Digest>
void expectContextRefused(const Bytes& state) {
    const ul::P<Digest> digest = ul::make<Digest>(nullptr);
    expectError("Bad OpenSSL digest context in state stream.", [&] { loadState(*digest, state); });
    EXPECT_EQ(storeState(*digest), storeState(*ul::make<Digest>(nullptr)));
}

constexpr std::size_t contextAt = 16;

} // namespace

TEST(HostHash, WithAnUnknownContext_SavesAndResumesItsBytes) {
    EXPECT_EQ(getStateOfAbc<Digest_Sum>().size(), contextAt + sizeof(SumContext) + 4 + 2);
    EXPECT_EQ(resumeWithDef<Digest_Sum>(), "5502000000000000");
}

TEST(HostHash, OfEmptyInput_NeverGetsANullPointer) {
    const ul::P<Digest_Sum> digest = ul::make<Digest_Sum>(nullptr);
    digest->update(nullptr, 0);
    EXPECT_EQ(toHex(finish(*digest)), "0000000000000000");
}

TEST(HostHash, WithMembersInAnotherOrder_ResumesAndRefusesAFillOutsideTheBlock) {
    EXPECT_EQ(resumeWithDef<Digest_Tail>(), "6162636465660000");
    expectContextRefused<Digest_Tail>(withWord(getStateOfAbc<Digest_Tail>(), contextAt, 0x08080808));
}

TEST(HostHash, WithSHA512_SavesItsNumbersLeastSignificantByteFirst) {
    const std::string context = "08c9bcf367e6096a3ba7ca8485ae67bb2bf894fe72f36e3cf1361d5f3af54fa5"
                                "d182e6ad7f520e511f6c3e2b8c68059b6bbd41fbabd9831f79217e1319cde05b" // FIPS 180-4, 5.3.5
                                "18000000000000000000000000000000"                                 // bits
                                "616263";
    const Bytes state = getStateOfAbc<Digest_SHA512>();
    EXPECT_EQ(toHex(state), "010000002f10101040000000d8000000" + context + std::string(2 * 125, '0') +
                                "0300000040000000" + "000000000100");
    EXPECT_EQ(resumeWithDef<Digest_SHA512>(), "e32ef19623e8ed9d267f657a81944b3d07adbb768518068e88435745564e8d41"
                                              "50a0a703be2a7d88b61e3d390c2bb97e2d4c311fdc69d6b1267f05f59aa920e7");
    constexpr std::size_t fillAt = contextAt + 208;
    for (const unsigned fill : {128U, 0xFFFFFFFFU})
        expectContextRefused<Digest_SHA512>(withWord(state, fillAt, fill));
    for (const unsigned size : {48U, 65U})
        expectContextRefused<Digest_SHA512>(withWord(state, fillAt + 4, size));
}

} // namespace sarn_test
