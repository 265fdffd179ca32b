// SPDX-License-Identifier: Apache-2.0
// Uses of what threads share, each of which checks its result; new processes; and what main() runs of both.
#pragma once

#include "support/cipher_test_data.h"

#include "sarn/password_key_cache.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace sarn_test {

using IV = std::array<unsigned char, 16>;

/// What all threads of a process use.
class Shared {
public:
    Shared();

    /// Does one of the operations, chosen at random. Throws if its result is wrong. Initialisation vectors that a
    /// cipher drew are added to `ivs`.
    void use(std::mt19937& random, std::vector<IV>& ivs) const;

    /// Encrypts under a new initialisation vector and decrypts again.
    IV drawIV() const;

private:
    Bytes encrypt(const unsigned char* iv) const;
    void useRegistries(std::mt19937& random) const;
    void useCache(std::mt19937& random) const;

    ul::P<sarn::ICipher> m_cipher = getAnyCipher("aes256cbc");
    TestKey m_key{32};
    Bytes m_encrypted;
    Bytes m_digest;
    ul::P<sarn::CPasswordKeyCache> m_cache;
    std::vector<Bytes> m_keys;
};

/// Throws if a vector is there twice.
void checkNoneIsRepeated(std::vector<IV>& ivs);

/// Runs `work` in a new process. Throws unless it ends well within ten seconds.
template <class Work>
void runInNewProcess(Work work) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(10);
        try {
            work();
        } catch (...) {
            ::_exit(1);
        }
        ::_exit(0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM)
        throw std::runtime_error("a process hangs");
    if (status != 0)
        throw std::runtime_error("a process ended with the status " + std::to_string(status));
}

/// In `count` new processes lets `threadCount` threads use every process-wide object at the same moment for the first
/// time. Throws if they did not all get the same ones.
void runFirstUses(int count, int threadCount);

/// `count` times starts a new process whose main returns while four detached threads encrypt under random
/// initialisation vectors. Throws unless each ends as if nothing else ran.
void runEnds(int count);

/// Forks `count` times at random moments while threads use all that is shared. Each child draws random bytes. Returns
/// how many initialisation vectors and draws of that size there were in all; throws if one came twice.
std::size_t runForks(int count);

} // namespace sarn_test
