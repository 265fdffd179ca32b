// SPDX-License-Identifier: Apache-2.0
#include "support/memory_spy.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include <malloc.h>

namespace sarn_test {

namespace {

std::atomic<const char*> watchedSecret{nullptr};
std::atomic<int> foundCount{0};
std::atomic<int> freedCount{0};
// Allocations that succeed before one fails; below 0 none does.
thread_local int allocationsLeft = -1;
thread_local bool hasFailed = false;
thread_local int balance = 0;

bool mustFail() {
    if (allocationsLeft < 0 || allocationsLeft-- > 0)
        return false;
    hasFailed = true;
    return true;
}

void* allocateBlock(std::size_t size) {
    void* const block = mustFail() ? nullptr : std::malloc(size > 0 ? size : 1);
    balance += block ? 1 : 0;
    return block;
}

std::size_t getBlockSize(void* block) {
#ifdef _WIN32
    return ::_msize(block);
#else
    return ::malloc_usable_size(block);
#endif
}

void freeBlock(void* block) noexcept {
    const char* const secret = watchedSecret.load();
    if (secret && block) {
        const auto* const bytes = static_cast<const char*>(block);
        const auto* const end = bytes + getBlockSize(block);
        freedCount.fetch_add(1);
        if (std::search(bytes, end, secret, secret + std::strlen(secret)) != end)
            foundCount.fetch_add(1);
    }
    balance -= block ? 1 : 0;
    std::free(block);
}

} // namespace

SecretSpy::SecretSpy(const char* secret) {
    foundCount = 0;
    freedCount = 0;
    watchedSecret = secret;
}

SecretSpy::~SecretSpy() {
    watchedSecret = nullptr;
}

int SecretSpy::getFoundCount() const {
    return foundCount;
}

int SecretSpy::getFreedCount() const {
    return freedCount;
}

AllocationBalance::AllocationBalance() : m_before(balance) {}

int AllocationBalance::get() const {
    return balance - m_before;
}

AllocationFailure::AllocationFailure(int index) {
    hasFailed = false;
    allocationsLeft = index;
}

AllocationFailure::~AllocationFailure() {
    allocationsLeft = -1;
}

bool AllocationFailure::hasHappened() const {
    return hasFailed;
}

} // namespace sarn_test

void* operator new(std::size_t size) {
    void* const block = sarn_test::allocateBlock(size);
    if (!block)
        throw std::bad_alloc();
    return block;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return sarn_test::allocateBlock(size);
}

void operator delete(void* block) noexcept {
    sarn_test::freeBlock(block);
}

void operator delete(void* block, std::size_t) noexcept {
    sarn_test::freeBlock(block);
}

// Buffers have functions of their own; the linker sends their calls here.
extern "C" {

void* __wrap__ZN2ul14allocateMemoryEi(int size);
void* __wrap__ZN2ul12resizeMemoryEPvi(void* block, int size);
void __wrap__ZN2ul10freeMemoryEPv(void* block) noexcept;

void* __wrap__ZN2ul14allocateMemoryEi(int size) {
    return ::operator new(static_cast<std::size_t>(size));
}

void* __wrap__ZN2ul12resizeMemoryEPvi(void* block, int size) {
    void* const resized = sarn_test::mustFail() ? nullptr : std::realloc(block, static_cast<std::size_t>(size));
    if (!resized)
        throw std::bad_alloc();
    sarn_test::balance += block ? 0 : 1;
    return resized;
}

void __wrap__ZN2ul10freeMemoryEPv(void* block) noexcept {
    sarn_test::freeBlock(block);
}

} // extern "C"
