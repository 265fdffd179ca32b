// SPDX-License-Identifier: Apache-2.0
// Functions of the C library, the C++ runtime and the base library that are wrapped so that they can be replaced.
#pragma once

#include "failures/injection.h"

#include <cerrno>
#include <cstddef>
#include <new>

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

namespace sarn_test {

// A template cannot deduce the types of functions that are variadic or overloaded.

inline int openFile(const char* path, int flags) {
    return ::open(path, flags);
}

inline int openFileAt(int folder, const char* name, int flags, mode_t mode) {
    return ::openat(folder, name, flags, mode);
}

inline int setFileFlags(int file, int command, int flags) {
    return ::fcntl(file, command, flags);
}

// The constructor and the destructor of ul::CMutexLock, whose addresses C++ does not give.
void beginLock(void* lock, void* mutex) __asm__("_ZN2ul10CMutexLockC1EPNS_6IMutexE");
void endLock(void* lock) __asm__("_ZN2ul10CMutexLockD1Ev");

using New = void* (*)(std::size_t);
using Delete = void (*)(void*);
using SizedDelete = void (*)(void*, std::size_t);

/// Does not call the nothrow form of the runtime: that calls the throwing form, so the allocation would count twice.
inline void* newMemoryOrNull(std::size_t size, const std::nothrow_t*) {
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

/// Handles only a piece of `size` bytes.
template <class Function>
inline ssize_t doPiece(std::size_t size, Function function) {
    const std::size_t piece = SmallPieces::limit(size);
    if (piece > 0 || size == 0)
        return function(piece);
    errno = EINTR;
    return -1;
}

inline ssize_t readPiece(int file, void* data, std::size_t size) {
    return doPiece(size, [&](std::size_t piece) { return ::read(file, data, piece); });
}

inline ssize_t writePiece(int file, const void* data, std::size_t size) {
    return doPiece(size, [&](std::size_t piece) { return ::write(file, data, piece); });
}

inline ssize_t drawPiece(void* data, std::size_t size, unsigned flags) {
    return doPiece(size, [&](std::size_t piece) { return ::getrandom(data, piece, flags); });
}

inline int flushFile(int file) {
    return ::fsync(file);
}

inline int flushFolder(int folder) {
    return ::fsync(folder);
}

} // namespace sarn_test
