// SPDX-License-Identifier: Apache-2.0
// Processes hand a running digest on to each other.
#include "support/digest_test_data.h"

#include <array>

#include <sys/wait.h>
#include <unistd.h>

namespace sarn_test {

namespace {

/// Continues the digest that `state` holds with `piece` in a process of its own, and returns the state it ends with.
Bytes continueElsewhere(const char* id, const Bytes& state, const Bytes& piece) {
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe(ends.data()), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const ul::P<sarn::IDigest> digest = createDigest(id);
        if (!state.empty())
            loadState(*digest, state);
        feed(*digest, piece);
        const Bytes result = storeState(*digest);
        ::_exit(::write(ends[1], result.data(), result.size()) == static_cast<ssize_t>(result.size()) ? 0 : 1);
    }
    ::close(ends[1]);
    Bytes result(1024);
    const ssize_t count = ::read(ends[0], result.data(), result.size());
    ::close(ends[0]);
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    result.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return result;
}

} // namespace

TEST(DigestState, PassedThroughForkedProcesses_GivesTheDigestOfTheWhole) {
    const Bytes input = makePattern(1000);
    for (const char* const id : digestIDs) {
        Bytes state;
        for (std::ptrdiff_t at = 0; at < 1000; at += 125)
            state = continueElsewhere(id, state, Bytes(input.begin() + at, input.begin() + at + 125));
        EXPECT_EQ(finish(*resumeDigest(id, state)), getDigest(id, input)) << id;
    }
}

} // namespace sarn_test
