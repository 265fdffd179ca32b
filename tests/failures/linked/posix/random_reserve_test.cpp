// SPDX-License-Identifier: Apache-2.0
// Random bytes drawn ahead of use, seen from the system's side: how often it is asked, and what is in the block.
#include "random/random_reserve.h"
#include "random/system_random.h"

#include "ul/error.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>
#include <utility>

#include <sys/random.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

int g_systemCalls = 0;
int g_callsToFail = 0;
bool g_isMadviseRefused = false;
bool g_isForkedDuringFill = false;
bool g_isForkedBeforeCopy = false;
std::function<void()> g_duringFill;
const unsigned char* g_block = nullptr;
std::size_t g_blockSize = 0;

/// Leaves the page of `inside` as a process finds it that is forked by a signal handler at this moment: zero.
void wipePage(const void* inside) {
    constexpr std::uintptr_t pageSize = 4096;
    void* const page = reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(inside) & ~(pageSize - 1));
    std::memset(page, 0, pageSize);
}

} // namespace

extern "C" {

ssize_t __real_getrandom(void* data, std::size_t size, unsigned flags);
ssize_t __wrap_getrandom(void* data, std::size_t size, unsigned flags);
int __real_madvise(void* memory, std::size_t size, int advice);
int __wrap_madvise(void* memory, std::size_t size, int advice);
void* __real_memcpy(void* to, const void* from, std::size_t size);
void* __wrap_memcpy(void* to, const void* from, std::size_t size);

ssize_t __wrap_getrandom(void* data, std::size_t size, unsigned flags) {
    ++g_systemCalls;
    g_block = static_cast<unsigned char*>(data);
    g_blockSize = size;
    if (g_callsToFail > 0) {
        --g_callsToFail;
        errno = ENOSYS;
        return -1;
    }
    const ssize_t count = __real_getrandom(data, size, flags);
    if (const std::function<void()> duringFill = std::exchange(g_duringFill, nullptr))
        duringFill();
    if (std::exchange(g_isForkedDuringFill, false))
        wipePage(data);
    return count;
}

void* __wrap_memcpy(void* to, const void* from, std::size_t size) {
    const auto* const source = static_cast<const unsigned char*>(from);
    if (g_isForkedBeforeCopy && source >= g_block && source < g_block + g_blockSize) {
        g_isForkedBeforeCopy = false;
        wipePage(source);
    }
    return __real_memcpy(to, from, size);
}

int __wrap_madvise(void* memory, std::size_t size, int advice) {
    if (g_isMadviseRefused) {
        errno = EINVAL;
        return -1;
    }
    return __real_madvise(memory, size, advice);
}

} // extern "C"

namespace {

using Piece = std::array<unsigned char, 16>;

Piece take(ul::RandomReserve& reserve) {
    Piece piece{};
    reserve.take(piece.data(), piece.size());
    return piece;
}

bool isZero(const unsigned char* begin, const unsigned char* end) {
    return std::all_of(begin, end, [](int byte) { return byte == 0; });
}

/// Runs `check` in a forked process; whether it returned true there.
template <class Check>
bool holdsInChild(Check check) {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(check() ? 0 : 1);
    int status = -1;
    ::waitpid(child, &status, 0);
    return status == 0;
}

class RandomReserve : public testing::Test {
protected:
    RandomReserve() { g_systemCalls = g_callsToFail = 0; }
    ~RandomReserve() override { g_isMadviseRefused = false; }
};

TEST_F(RandomReserve, ManySmallRequests_AskTheSystemOncePerBlock) {
    ul::RandomReserve reserve;
    take(reserve);
    const int perBlock = static_cast<int>(g_blockSize / sizeof(Piece));
    EXPECT_GT(perBlock, 200);
    for (int i = 1; i < perBlock; ++i)
        take(reserve);
    EXPECT_EQ(g_systemCalls, 1);
    take(reserve);
    EXPECT_EQ(g_systemCalls, 2);
}

TEST_F(RandomReserve, BytesThatWereHandedOut_AreWiped) {
    ul::RandomReserve reserve;
    const Piece piece = take(reserve);
    EXPECT_FALSE(isZero(piece.data(), piece.data() + piece.size()));
    EXPECT_TRUE(isZero(g_block + g_blockSize - sizeof(Piece), g_block + g_blockSize));
    EXPECT_EQ(std::search(g_block, g_block + g_blockSize, piece.begin(), piece.end()), g_block + g_blockSize);
    EXPECT_FALSE(isZero(g_block, g_block + 256));
}

TEST_F(RandomReserve, ForkedProcess_FindsTheBlockEmptyAndDrawsItsOwn) {
    ul::RandomReserve reserve;
    take(reserve);
    EXPECT_TRUE(holdsInChild([&] {
        const bool isEmpty = isZero(g_block, g_block + g_blockSize);
        const int callsBefore = g_systemCalls;
        const Piece piece = take(reserve);
        return isEmpty && g_systemCalls == callsBefore + 1 && !isZero(piece.data(), piece.data() + piece.size());
    }));
    take(reserve);
    EXPECT_EQ(g_systemCalls, 1) << "the parent goes on with its block";
}

TEST_F(RandomReserve, ForkWhileTheBlockIsFilled_IsNoticedAndItIsFilledAgain) {
    ul::RandomReserve reserve;
    g_isForkedDuringFill = true;
    const Piece piece = take(reserve);
    EXPECT_FALSE(isZero(piece.data(), piece.data() + piece.size()));
    EXPECT_EQ(g_systemCalls, 2);
}

TEST_F(RandomReserve, ForkBetweenTheLookAndTheCopy_IsNoticedAndOtherBytesAreDrawn) {
    ul::RandomReserve reserve;
    take(reserve);
    g_isForkedBeforeCopy = true;
    const Piece piece = take(reserve);
    EXPECT_FALSE(g_isForkedBeforeCopy);
    EXPECT_FALSE(isZero(piece.data(), piece.data() + piece.size()));
    EXPECT_EQ(g_systemCalls, 2);
}

TEST_F(RandomReserve, RequestWhileAnotherIsServed_GoesToTheSystemAndWaitsForNobody) {
    ul::RandomReserve reserve;
    Piece meanwhile{};
    g_duringFill = [&] { meanwhile = take(reserve); };
    const Piece piece = take(reserve);
    EXPECT_FALSE(isZero(meanwhile.data(), meanwhile.data() + meanwhile.size()));
    EXPECT_NE(piece, meanwhile);
    EXPECT_EQ(g_systemCalls, 2);
    take(reserve);
    EXPECT_EQ(g_systemCalls, 2) << "the block is there for the next";
}

TEST_F(RandomReserve, ForkWhileAnotherThreadIsServed_LetsTheChildDrawForEver) {
    ul::RandomReserve reserve;
    bool isDrawn = false;
    // The fork comes in the middle of the other request, which the child never ends.
    g_duringFill = [&] {
        isDrawn = holdsInChild([&] {
            const Piece first = take(reserve);
            const Piece second = take(reserve);
            return first != second && !isZero(first.data(), first.data() + first.size());
        });
    };
    take(reserve);
    EXPECT_TRUE(isDrawn);
}

TEST_F(RandomReserve, SystemThatCannotWipeOnFork_IsAskedEachTime) {
    g_isMadviseRefused = true;
    ul::RandomReserve reserve;
    for (int i = 0; i < 3; ++i)
        take(reserve);
    EXPECT_EQ(g_systemCalls, 3);
    EXPECT_EQ(g_blockSize, sizeof(Piece));
}

TEST_F(RandomReserve, LargeRequests_GoToTheSystemDirectly) {
    ul::RandomReserve reserve;
    std::array<unsigned char, 257> bytes{};
    reserve.take(bytes.data(), bytes.size());
    EXPECT_EQ(g_block, bytes.data());
    reserve.take(bytes.data(), 256);
    EXPECT_NE(g_block, bytes.data());
}

TEST_F(RandomReserve, SingleBytesFromTheSystem_AreRandom) {
    std::array<unsigned char, 64> bytes{};
    for (unsigned char& byte : bytes)
        ul::fillFromSystemGenerator(&byte, 1);
    EXPECT_FALSE(isZero(bytes.data(), bytes.data() + bytes.size()));
}

TEST_F(RandomReserve, SystemThatFails_RaisesAndIsAskedAgainNextTime) {
    ul::RandomReserve reserve;
    g_callsToFail = 1;
    EXPECT_THROW(take(reserve), ul::CError);
    const Piece piece = take(reserve);
    EXPECT_FALSE(isZero(piece.data(), piece.data() + piece.size()));
    EXPECT_EQ(g_systemCalls, 2);
}

} // namespace
