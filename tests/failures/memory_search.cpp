// SPDX-License-Identifier: Apache-2.0
#include "failures/memory_search.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <new>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

namespace sarn_test {

namespace {

// Volatile, so that the compiler does not keep unmasked bytes.
volatile unsigned char mask = 0xA5;

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

/// A copy of a part of the process's memory. The system copies it, because a listed region may have been unmapped
/// since. The copy is a region of its own, which is not searched; as it is shared, the system merges it with no other.
class Window {
public:
    static constexpr std::size_t size = 1 << 20;

    Window() {
        static void* const memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        static const int file = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
        if (memory == MAP_FAILED || file < 0)
            throw std::runtime_error("the process's memory cannot be read");
        m_memory = static_cast<unsigned char*>(memory);
        m_file = file;
    }

    /// Copies the bytes at `from`. Returns their number.
    std::size_t read(const unsigned char* from, std::size_t count) {
        const ssize_t done = ::pread(m_file, m_memory, std::min(count, size),
                                     static_cast<off_t>(reinterpret_cast<std::uintptr_t>(from)));
        return done < 0 ? 0 : static_cast<std::size_t>(done);
    }
    const unsigned char* getData() const { return m_memory; }
    bool isWithin(const Region& region) const {
        return m_memory >= region.begin && m_memory < region.begin + region.size;
    }

private:
    unsigned char* m_memory;
    int m_file;
};

/// Masked pieces of canaries by their first byte.
using Pieces = std::array<std::vector<const unsigned char*>, 256>;

bool holds(const Pieces& pieces, const unsigned char* data, std::size_t size) {
    const unsigned char key = mask;
    const auto isSame = [key](unsigned char masked, unsigned char byte) { return masked == (byte ^ key); };
    for (std::size_t i = 0; i + Canary::pieceSize <= size; ++i) {
        for (const unsigned char* const piece : pieces[data[i] ^ key]) {
            if (std::equal(piece, piece + Canary::pieceSize, data + i, isSame))
                return true;
        }
    }
    return false;
}

/// The first and the last piece of each canary.
Pieces listPieces(const std::vector<Canary>& canaries) {
    Pieces pieces;
    for (const Canary& canary : canaries)
        for (const std::size_t start : {std::size_t{0}, Canary::pieceSize})
            pieces[canary.getMasked()[start]].push_back(canary.getMasked() + start);
    return pieces;
}

/// What FreedSecrets looks for, and the number of blocks that it has found.
std::vector<Canary> watchedCanaries;
Pieces watchedPieces;
std::atomic<bool> isWatching{false};
std::atomic<int> freedSecrets{0};

void noteFreed(void* block) noexcept {
    if (block && isWatching && holds(watchedPieces, static_cast<unsigned char*>(block), ::malloc_usable_size(block)))
        ++freedSecrets;
}

} // namespace

Canary::Canary(unsigned char kind) {
    for (int i = 0; i < size; ++i) {
        // The bytes differ and are printable, so that they can be a password.
        const auto byte = static_cast<unsigned char>('!' + (kind * 31 + i * i * 7 + i * 3) % 90);
        m_masked[static_cast<std::size_t>(i)] = static_cast<unsigned char>(byte ^ mask);
    }
}

Canary Canary::of(const void* secret) {
    const auto* const bytes = static_cast<const unsigned char*>(secret);
    Canary canary(0);
    for (std::size_t i = 0; i < size; ++i)
        canary.m_masked[i] = static_cast<unsigned char>(bytes[i] ^ mask);
    return canary;
}

void Canary::write(unsigned char* out) const {
    for (std::size_t i = 0; i < size; ++i)
        out[i] = static_cast<unsigned char>(m_masked[i] ^ mask);
}

std::vector<std::string> findInMemory(const std::vector<Canary>& canaries) {
    const Pieces pieces = listPieces(canaries);
    std::vector<std::string> places;
    Window window;
    for (const Region& region : listRegions()) {
        if (window.isWithin(region))
            continue;
        // Windows overlap by less than a piece, so that each piece is found once.
        for (std::size_t offset = 0; offset < region.size; offset += Window::size - Canary::pieceSize + 1) {
            const std::size_t size = window.read(region.begin + offset, region.size - offset);
            if (holds(pieces, window.getData(), size))
                places.push_back(region.name.empty() ? "unnamed memory" : region.name);
        }
    }
    return places;
}

FreedSecrets::FreedSecrets(const std::vector<Canary>& canaries) {
    watchedCanaries = canaries;
    watchedPieces = listPieces(watchedCanaries);
    freedSecrets = 0;
    isWatching = true;
}

FreedSecrets::~FreedSecrets() {
    isWatching = false;
}

int FreedSecrets::take() {
    return freedSecrets.exchange(0);
}

} // namespace sarn_test

// The libraries use these too.

void* operator new(std::size_t size) {
    if (void* const block = std::malloc(std::max<std::size_t>(size, 1)))
        return block;
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
    sarn_test::noteFreed(block);
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
