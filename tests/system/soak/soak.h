// SPDX-License-Identifier: Apache-2.0
// Checked uses of objects that threads share, and the runs of main().
#pragma once

#include "support/cipher_test_data.h"

#include "sarn/password_key_cache.h"

#include <csignal>
#include <cstddef>
#include <random>

#include <sys/wait.h>
#include <unistd.h>

namespace sarn_test {

using IV = std::array<unsigned char, 16>;

/// Objects that all threads of a process use.
class Shared {
public:
    Shared();

    /// Does a random operation. Throws if its result is wrong. Adds the random IVs of the cipher to `ivs`.
    void use(std::mt19937& random, std::vector<IV>& ivs) const;

    /// Encrypts under a random IV and decrypts again. Returns the IV.
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

/// Throws if two IVs are equal.
void checkNoneIsRepeated(std::vector<IV>& ivs);

/// Runs `work` in a new process. Throws unless it succeeds within ten seconds.
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

/// In each of `count` new processes, `threadCount` threads use every process-wide object for the first time at once.
/// Throws unless all threads get the same objects.
void runFirstUses(int count, int threadCount);

/// Starts `count` new processes. Each ends while four detached threads encrypt under random IVs. Throws unless all
/// succeed.
void runEnds(int count);

/// Forks `count` times at random moments while threads use the shared objects. Each child draws random bytes. Returns
/// the number of IVs and of draws of that size; throws if two are equal.
std::size_t runForks(int count);

} // namespace sarn_test
