// SPDX-License-Identifier: Apache-2.0
// Functions of the C library and of the C++ runtime in a form that a replacement can be made of.
#pragma once

#include "failures/injection.h"

#include <cerrno>
#include <cstddef>
#include <new>

#include <fcntl.h>
#include <unistd.h>

namespace sarn_test {

// Functions of the C library that take what a template cannot name: any number of arguments, or one of several types.

inline int openFile(const char* path, int flags) {
    return ::open(path, flags);
}

inline int openFileAt(int folder, const char* name, int flags, mode_t mode) {
    return ::openat(folder, name, flags, mode);
}

inline int setFileFlags(int file, int command, int flags) {
    return ::fcntl(file, command, flags);
}

using New = void* (*)(std::size_t);
using Delete = void (*)(void*);
using SizedDelete = void (*)(void*, std::size_t);

/// Not by way of the one in the runtime, which calls the one that throws and would count twice.
inline void* newMemoryOrNull(std::size_t size, const std::nothrow_t*) {
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

/// Does what a call does with a piece of what it was asked for.
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

inline int flushFile(int file) {
    return ::fsync(file);
}

inline int flushFolder(int folder) {
    return ::fsync(folder);
}

} // namespace sarn_test
