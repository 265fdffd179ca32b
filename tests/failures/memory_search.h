// SPDX-License-Identifier: Apache-2.0
// Looks for a secret in the whole memory of the process.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace sarn_test {

/// Bytes that stand nowhere in the process unless they are written: only their masked form does.
class Canary {
public:
    static constexpr int size = 32;
    /// It is found by a piece, its first or its last 16 bytes.
    static constexpr std::size_t pieceSize = 16;

    /// Each `kind` is another canary.
    explicit Canary(unsigned char kind);
    /// From `size` bytes of a secret that is known only at run time. The caller wipes what it has of it.
    static Canary of(const void* secret);

    /// Writes the bytes to `out`.
    void write(unsigned char* out) const;
    const unsigned char* getMasked() const { return m_masked.data(); }

private:
    std::array<unsigned char, size> m_masked;
};

/// Every place where a piece of one of the canaries stands, described by the name of its region.
std::vector<std::string> findInMemory(const std::vector<Canary>& canaries);

} // namespace sarn_test
