// SPDX-License-Identifier: Apache-2.0
// Searches the whole memory of the process, and the blocks that it frees, for secrets.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace sarn_test {

/// Secret bytes. The object contains only their masked form.
class Canary {
public:
    static constexpr int size = 32;
    /// The search looks for two pieces: the first and the last 16 bytes.
    static constexpr std::size_t pieceSize = 16;

    /// Makes bytes that differ for each `kind`.
    explicit Canary(unsigned char kind);
    /// Masks the first `size` bytes of `secret`.
    static Canary of(const void* secret);

    /// Writes the secret bytes to `out`.
    void write(unsigned char* out) const;
    const unsigned char* getMasked() const { return m_masked.data(); }

private:
    std::array<unsigned char, size> m_masked;
};

/// The names of the regions that contain a piece of one of the canaries, one for each place.
std::vector<std::string> findInMemory(const std::vector<Canary>& canaries);

/// Counts the blocks that contain a secret when `operator delete` frees them. A search afterwards would miss those that
/// were overwritten since. One exists at a time.
class FreedSecrets {
public:
    explicit FreedSecrets(const std::vector<Canary>& canaries);
    FreedSecrets(const FreedSecrets&) = delete;
    FreedSecrets& operator=(const FreedSecrets&) = delete;
    ~FreedSecrets();
    /// The number of such blocks since the last call.
    int take();
};

} // namespace sarn_test
