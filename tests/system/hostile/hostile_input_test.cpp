// SPDX-License-Identifier: Apache-2.0
// Ciphertexts and saved states from a medium that anyone can write to.
#include "failures/call_watch.h"
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"

namespace sarn_test {

namespace {

/// Decrypts and appends to a buffer, of which the byte before the result must stay. Returns whether that raised an
/// error.
bool isRefused(const CipherSizes& sizes, const Bytes& encrypted) {
    const auto size = static_cast<int>(encrypted.size());
    Buffer out;
    fill(out, toBytes("a"));
    bool hasRaised = false;
    try {
        getAnyCipher(sizes.id)->decrypt(TestKey(sizes.key), encrypted.data(), size, out, true, nullptr);
        EXPECT_LE(out.getUsed(), 1 + size - sizes.iv);
    } catch (const ul::CError&) {
        hasRaised = true;
    }
    EXPECT_GE(out.getUsed(), 1);
    EXPECT_EQ(out.getData()[0], 'a');
    return hasRaised;
}

/// The number of bytes that all allocations of the libraries have asked for.
std::intptr_t sumAllocations(const CallWatch& watch) {
    std::intptr_t sum = 0;
    for (const char* const name : {"malloc", "_Znwm", "_Znam", "_ZnwmRKSt9nothrow_t"}) {
        for (const Call& call : watch.getCalls(name))
            sum += call.arguments[0];
    }
    for (const Call& call : watch.getCalls("realloc"))
        sum += call.arguments[1];
    for (const Call& call : watch.getCalls("calloc"))
        sum += call.arguments[0] * call.arguments[1];
    return sum;
}

} // namespace

TEST(HostileCiphertext, CutOrChanged_IsDecryptedOrRefused_AndKeepsTheBytesBeforeTheResult) {
    int refused = 0;
    for (const CipherSizes& sizes : getRegisteredCiphers()) {
        SCOPED_TRACE(sizes.id);
        Buffer buffer;
        getAnyCipher(sizes.id)->encrypt(TestKey(sizes.key), makePattern(40).data(), 40, buffer, false, nullptr);
        const Bytes encrypted = toBytes(buffer);
        for (std::size_t at = 0; at < encrypted.size(); ++at) {
            Bytes changed = encrypted;
            changed[at] = static_cast<unsigned char>(changed[at] ^ 0x80);
            for (const Bytes& text : {changed, cut(encrypted, static_cast<int>(at))})
                refused += isRefused(sizes, text) ? 1 : 0;
        }
    }
    EXPECT_GT(refused, 100);
}

TEST(HostileState, WithEachLengthInEachPlace_IsLoadedOrRefusedWithMemoryForItsBytesOnly) {
    int refused = 0;
    for (const Vector& vector : readStates()) {
        const Bytes state = vector.getBytes("state");
        const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType(vector.getSection().c_str());
        for (std::size_t at = 0; at + 4 <= state.size(); ++at) {
            for (const unsigned length : {0x7FFFFFFFU, 0xFFFFFFFFU, 0x00100000U}) {
                const Bytes damaged = withWord(state, at, length);
                const CallWatch watch;
                try {
                    loadState(*type->createDigest(), damaged);
                } catch (const ul::CError&) {
                    ++refused;
                }
                ASSERT_LT(sumAllocations(watch), 20000) << vector.describe() << " " << at << " " << length;
            }
        }
    }
    EXPECT_GT(refused, 1000);
}

} // namespace sarn_test
