// SPDX-License-Identifier: Apache-2.0
#include "injection/memory_search.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>

namespace sarn_test {

namespace {

// Read where it is used, so that the compiler cannot keep unmasked bytes.
volatile unsigned char mask = 0xA5;

constexpr std::size_t pieceSize = 16;

struct Region {
    const unsigned char* begin;
    std::size_t size;
    std::string name;
};

/// All memory that can be read and written.
std::vector<Region> listRegions() {
    std::vector<Region> regions;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char dash = 0;
        std::string rights;
        std::string skipped;
        std::string name;
        fields >> std::hex >> begin >> dash >> end >> rights >> skipped >> skipped >> skipped >> name;
        if (rights.compare(0, 2, "rw") == 0)
            regions.push_back({reinterpret_cast<const unsigned char*>(begin), end - begin, name});
    }
    return regions;
}

/// Calls `found` for each place of the region at which the canary's first or 17th byte stands.
template <class Found>
void searchRegion(const Region& region, unsigned char first, Found found) {
    const unsigned char* at = region.begin;
    const unsigned char* const end = region.begin + region.size;
    while (at < end && (at = static_cast<const unsigned char*>(
                            std::memchr(at, first, static_cast<std::size_t>(end - at)))) != nullptr) {
        found(at, static_cast<std::size_t>(end - at));
        ++at;
    }
}

} // namespace

Canary::Canary(unsigned char kind) {
    for (int i = 0; i < size; ++i) {
        // Printable, different from place to place, and no null character: it serves as a password too.
        const auto byte = static_cast<unsigned char>('!' + (kind * 31 + i * i * 7 + i * 3) % 90);
        m_masked[static_cast<std::size_t>(i)] = static_cast<unsigned char>(byte ^ mask);
    }
}

Canary Canary::of(const unsigned char* secret) {
    Canary canary(0);
    for (std::size_t i = 0; i < size; ++i)
        canary.m_masked[i] = static_cast<unsigned char>(secret[i] ^ mask);
    return canary;
}

void Canary::write(unsigned char* out) const {
    for (std::size_t i = 0; i < size; ++i)
        out[i] = static_cast<unsigned char>(m_masked[i] ^ mask);
}

unsigned char Canary::getFirst(bool ofLastHalf) const {
    return static_cast<unsigned char>(m_masked[ofLastHalf ? pieceSize : 0] ^ mask);
}

bool Canary::standsAt(const unsigned char* at, std::size_t available) const {
    const auto matches = [&](std::size_t start) {
        for (std::size_t i = 0; i < pieceSize; ++i) {
            if (at[i] != static_cast<unsigned char>(m_masked[start + i] ^ mask))
                return false;
        }
        return true;
    };
    return available >= pieceSize && (matches(0) || matches(pieceSize));
}

std::vector<std::string> findInMemory(const Canary& canary) {
    std::vector<std::string> places;
    for (const Region& region : listRegions()) {
        for (const bool ofLastHalf : {false, true}) {
            searchRegion(region, canary.getFirst(ofLastHalf), [&](const unsigned char* at, std::size_t available) {
                if (canary.standsAt(at, available))
                    places.push_back(region.name.empty() ? "unnamed memory" : region.name);
            });
        }
    }
    return places;
}

} // namespace sarn_test
