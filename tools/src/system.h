// SPDX-License-Identifier: Apache-2.0
// The operating system's part of files, terminals and interrupts: posix/system.cpp and windows/system.cpp.
#pragma once

#include <ul/host.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace tool {

/// Prepares the standard streams and catches interrupts. Call it once, first.
void prepareProcess();

/// \throws Interrupted after an interrupt. A second interrupt ends the process at once.
void throwIfInterrupted();

/// The exit status after an interrupt. Where programs end by a signal this call ends the process.
int endByInterrupt();

/// The path of a file with a name in UTF-8; outside Windows the name may have any bytes.
std::filesystem::path getPath(const std::string& name);

/// Opens a file. Returns a descriptor, or -1 and sets errno, like all functions below that return a number.
int openToRead(const std::filesystem::path& path);

/// Reads up to `size` bytes and returns how many; 0 at the end.
int readSome(int descriptor, void* data, int size);

/// Writes up to `size` bytes and returns how many.
int writeSome(int descriptor, const void* data, int size);

int closeFile(int descriptor);

bool isTerminal(int descriptor);

/// Creates a file, which must not exist, with these permissions as far as the process's mask allows them.
int createFile(const std::filesystem::path& path, unsigned permissions);

/// Number of bytes of a regular file after its position; -1 for anything else.
std::int64_t getRegularRest(int descriptor);

/// Moves the position of a regular file.
bool seek(int descriptor, std::int64_t position);

/// Writes everything to the disk.
int flush(int descriptor);

/// Gives a file its name if that is free. The error is file_exists if it is not.
std::error_code renameToFree(const std::filesystem::path& from, const std::filesystem::path& to);

/// Reads a line from the terminal without showing it. `prompt` is UTF-8.
/// \throws Problem without a terminal.
/// \throws Interrupted after an interrupt.
ul::TCryptBuffer<char> readHiddenLine(const std::string& prompt);

} // namespace tool
