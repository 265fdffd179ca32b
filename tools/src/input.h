// SPDX-License-Identifier: Apache-2.0
// Bytes of files and of standard input.
#pragma once

#include <ul/host.h>

#include <climits>
#include <cstdint>
#include <functional>
#include <string>

namespace tool {

/// How messages name an input: "standard input" for "-".
std::string describeInput(const std::string& name);

/// A file, standard input under the name "-", or an open descriptor. Any kind of file is read, for example a FIFO.
/// Errors are ul::CFileError with the name as the user wrote it.
class Input {
public:
    explicit Input(const std::string& name);
    /// Reads an open descriptor, which the caller owns.
    explicit Input(int descriptor);
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;
    ~Input();

    const std::string& getName() const { return m_name; }
    /// Number of bytes that are left; -1 if that is unknown.
    std::int64_t getLeft() const;

    /// Reads `size` bytes, or fewer at the end, and returns how many.
    /// \throws Interrupted
    int read(void* data, int size);
    /// Skips the first `size` bytes. Requires: nothing has been read.
    /// \throws Problem if there are fewer.
    void skip(std::int64_t size);

private:
    std::string m_name;
    bool m_isOwn;
    int m_descriptor;
};

/// Calls `use` with the rest of the input, in pieces of `pieceSize` bytes except the last, which is never empty. Shows
/// the progress on a terminal. The pieces are wiped.
void readPieces(Input& input, int pieceSize, const std::function<void(ul::CBytes)>& use);

/// Size in bytes of the largest file that is read into memory; the limit of the library.
constexpr int fileLimit = INT_MAX - (1 << 16);

/// The rest of the input, in memory that is wiped.
/// \throws Problem if it is larger than `limit` bytes.
ul::TCryptBuffer<unsigned char> readAll(Input& input, int limit);

/// The error of an operation on a file, for example "open file". The reason is that of errno.
ul::CFileError makeFileError(const char* operation, const std::string& name);

} // namespace tool
