// SPDX-License-Identifier: Apache-2.0
// Behaviour on Windows only.
#include "support/expect.h"
#include "support/replaced_import.h"

#include "ul/pointer.h"
#include "ul/random.h"

#include <gtest/gtest.h>

#include <bcrypt.h>

namespace sarn_test {

TEST(CMTRand, BlockOfADestroyedGenerator_IsReleasedOnWindows) {
    static void* released;
    const ReplacedImport release(
        "VirtualFree", +[](void* memory, SIZE_T size, DWORD kind) {
            released = memory;
            return ::VirtualFree(memory, size, kind);
        });
    unsigned char byte = 0;
    ul::make<ul::CMTRand>()->randData(&byte, 1);
    ASSERT_NE(released, nullptr);
    MEMORY_BASIC_INFORMATION information{};
    ::VirtualQuery(released, &information, sizeof information);
    EXPECT_EQ(information.State, static_cast<DWORD>(MEM_FREE));
}

TEST(CMTRand, WithoutTheGeneratorOfWindows_RaisesAnErrorWithItsStatus) {
    const ReplacedImport fail(
        "BCryptGenRandom", +[](BCRYPT_ALG_HANDLE, UCHAR*, ULONG, ULONG) { return static_cast<NTSTATUS>(0xC0000001); });
    unsigned char byte = 0;
    expectError("Random bytes are not available.", {"reason", "0xC0000001"},
                [&] { ul::make<ul::CMTRand>()->randData(&byte, 1); });
}

} // namespace sarn_test
