// SPDX-License-Identifier: Apache-2.0
// Random bytes that are drawn in advance: the number of system calls, and the content of the block.
#include "failures/injection.h"
#include "support/expect.h"

#include "ul/random.h"

#include <cstring>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sarn_test {

namespace {

using Piece = std::array<unsigned char, 16>;

constexpr Piece zero{};

bool isZero(const unsigned char* data, std::size_t size) {
    return std::all_of(data, data + size, [](int byte) { return byte == 0; });
}

/// Whether `check` returns true in a forked process.
template <class Check>
bool holdsInChild(Check check) {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(check() ? 0 : 1);
    int status = -1;
    ::waitpid(child, &status, 0);
    return status == 0;
}

/// Each generator has a block of its own.
struct RandomReserve : testing::Test {
    RandomReserve() {
        m_watch.after("getrandom", [this](const Call& call) {
            m_block = call.getPointer<unsigned char>(0);
            m_blockSize = static_cast<std::size_t>(call.arguments[1]);
            if (const std::function<void()> duringFill = std::exchange(m_duringFill, nullptr))
                duringFill();
        });
        m_watch.before("memcpy", [this](const Call& call) {
            const auto* const from = call.getPointer<unsigned char>(1);
            if (from >= m_block && from < m_block + m_blockSize && std::exchange(m_isForkedBeforeCopy, false))
                wipeBlock();
        });
    }

    Piece take() {
        if (!m_generator)
            m_generator = ul::make<ul::CMTRand>();
        Piece piece{};
        m_generator->randData(piece.data(), sizeof piece);
        return piece;
    }

    /// Fills the page of the block with zeros, as the system does in a process that a signal handler forks now.
    void wipeBlock() const {
        constexpr std::uintptr_t pageSize = 4096;
        const std::uintptr_t inPage = reinterpret_cast<std::uintptr_t>(m_block) % pageSize;
        std::memset(m_block - inPage, 0, pageSize);
    }

    void expectToBeAskedEachTime() {
        for (int i = 0; i < 3; ++i)
            take();
        EXPECT_EQ(countSystemCalls(), 3);
        EXPECT_EQ(m_blockSize, sizeof(Piece));
    }

    int countSystemCalls() const { return m_watch.count("getrandom"); }

    CallWatch m_watch;
    ul::P<ul::CMTRand> m_generator;
    unsigned char* m_block = nullptr;
    std::size_t m_blockSize = 0;
    std::function<void()> m_duringFill;
    bool m_isForkedBeforeCopy = false;
};

} // namespace

TEST_F(RandomReserve, ManySmallRequests_AskTheSystemOncePerBlock) {
    take();
    const int perBlock = static_cast<int>(m_blockSize / sizeof(Piece));
    EXPECT_GT(perBlock, 200);
    for (int i = 1; i < perBlock; ++i)
        take();
    EXPECT_EQ(countSystemCalls(), 1);
    take();
    EXPECT_EQ(countSystemCalls(), 2);
}

TEST_F(RandomReserve, RequestsOfASizeThatDividesTheBlock_UseAllOfIt) {
    const auto takeOne = [this] {
        unsigned char bytes[sizeof(std::size_t)];
        m_generator->randData(bytes, sizeof bytes);
    };
    m_generator = ul::make<ul::CMTRand>();
    takeOne();
    ASSERT_EQ(m_blockSize % sizeof(std::size_t), 0U);
    for (std::size_t i = 1; i < m_blockSize / sizeof(std::size_t); ++i)
        takeOne();
    EXPECT_EQ(countSystemCalls(), 1);
}

TEST_F(RandomReserve, BlockOfADestroyedGenerator_IsWipedAndReleased) {
    take();
    int released = 0;
    m_watch.before("munmap", [&](const Call& call) {
        const auto* const page = call.getPointer<unsigned char>(0);
        EXPECT_TRUE(m_block >= page && m_block + m_blockSize <= page + call.arguments[1]);
        EXPECT_TRUE(isZero(m_block, m_blockSize));
        ++released;
    });
    m_generator = nullptr;
    EXPECT_EQ(released, 1);
}

TEST_F(RandomReserve, BytesThatWereReturned_AreWiped) {
    const Piece piece = take();
    EXPECT_NE(piece, zero);
    EXPECT_TRUE(isZero(m_block + m_blockSize - sizeof piece, sizeof piece));
    EXPECT_EQ(std::search(m_block, m_block + m_blockSize, piece.begin(), piece.end()), m_block + m_blockSize);
    EXPECT_FALSE(isZero(m_block, 256));
}

TEST_F(RandomReserve, ForkedProcess_FindsTheBlockEmptyAndDrawsItsOwn) {
    take();
    EXPECT_TRUE(holdsInChild([&] {
        const bool isEmpty = isZero(m_block, m_blockSize);
        const int callsBefore = countSystemCalls();
        return isEmpty && take() != zero && countSystemCalls() == callsBefore + 1;
    }));
    take();
    EXPECT_EQ(countSystemCalls(), 1) << "the parent still uses its block";
}

TEST_F(RandomReserve, ForkWhileTheBlockIsFilled_IsNoticedAndTheBlockIsFilledAgain) {
    m_duringFill = [&] { wipeBlock(); };
    EXPECT_NE(take(), zero);
    EXPECT_EQ(countSystemCalls(), 2);
}

TEST_F(RandomReserve, ForkBetweenTheCheckAndTheCopy_IsNoticedAndOtherBytesAreDrawn) {
    take();
    m_isForkedBeforeCopy = true;
    EXPECT_NE(take(), zero);
    EXPECT_FALSE(m_isForkedBeforeCopy);
    EXPECT_EQ(countSystemCalls(), 2);
}

TEST_F(RandomReserve, RequestDuringAnother_GoesToTheSystemWithoutWaiting) {
    Piece meanwhile{};
    m_duringFill = [&] { meanwhile = take(); };
    const Piece piece = take();
    EXPECT_NE(meanwhile, zero);
    EXPECT_NE(piece, meanwhile);
    EXPECT_EQ(countSystemCalls(), 2);
    EXPECT_EQ(m_watch.getCalls("getrandom").at(0).arguments[1], sizeof meanwhile) << "the other request has not ended";
    take();
    EXPECT_EQ(countSystemCalls(), 2) << "the next request uses the block";
}

TEST_F(RandomReserve, ForkDuringTheRequestOfAnotherThread_LetsTheChildDrawBytes) {
    bool isDrawn = false;
    // The fork interrupts the request of the other thread, which does not exist in the child.
    m_duringFill = [&] {
        isDrawn = holdsInChild([&] {
            const Piece first = take();
            return first != zero && take() != first;
        });
    };
    take();
    EXPECT_TRUE(isDrawn);
}

TEST_F(RandomReserve, SystemThatIgnoresAdvice_IsAskedEachTime) {
    constexpr std::intptr_t accepted = 0;
    m_watch.failWith(accepted, "madvise");
    expectToBeAskedEachTime();
}

TEST_F(RandomReserve, SystemThatCannotWipeOnFork_IsAskedEachTime) {
    constexpr int adviceToWipe = 1;
    m_watch.fail("madvise", adviceToWipe);
    expectToBeAskedEachTime();
    std::array<unsigned char, 64> bytes{};
    for (unsigned char& byte : bytes)
        m_generator->randData(&byte, 1);
    EXPECT_FALSE(isZero(bytes.data(), bytes.size())) << "single bytes are random too";
    EXPECT_EQ(countSystemCalls(), 3 + 64);
}

TEST_F(RandomReserve, Block_IsKeptOutOfCoreFiles_AndIsUsedIfThatFails) {
    take();
    const std::vector<Call> advice = m_watch.getCalls("madvise");
    ASSERT_EQ(advice.size(), 3U);
    EXPECT_EQ(advice[2].arguments[0], advice[1].arguments[0]);
    EXPECT_EQ(advice[2].arguments[2], MADV_DONTDUMP);
    m_generator = nullptr;
    m_watch.fail("madvise", 2);
    take();
    take();
    EXPECT_EQ(countSystemCalls(), 2) << "one for each block";
}

TEST_F(RandomReserve, LargeRequests_GoToTheSystemDirectly) {
    take();
    std::array<unsigned char, 257> bytes{};
    m_generator->randData(bytes.data(), 256);
    EXPECT_NE(m_block, bytes.data());
    m_generator->randData(bytes.data(), 257);
    EXPECT_EQ(m_block, bytes.data());
}

TEST_F(RandomReserve, SystemThatFails_RaisesAndIsAskedAgainNextTime) {
    m_watch.fail("getrandom");
    EXPECT_THROW(take(), ul::CError);
    m_generator->randData(nullptr, 0);
    EXPECT_EQ(countSystemCalls(), 1) << "for no bytes it is not asked";
    EXPECT_NE(take(), zero);
    EXPECT_EQ(countSystemCalls(), 2);
}

TEST_F(RandomReserve, SystemThatGivesNothing_IsAskedAgain) {
    m_watch.failWith(0, "getrandom");
    EXPECT_NE(take(), zero);
    EXPECT_EQ(countSystemCalls(), 2);
}

TEST_F(RandomReserve, SystemThatIsInterruptedAndGivesFewerBytes_IsAskedForTheRest) {
    const SmallPieces pieces;
    EXPECT_NE(take(), zero);
    EXPECT_GT(countSystemCalls(), 100);
}

} // namespace sarn_test
