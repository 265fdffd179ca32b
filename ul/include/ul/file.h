// SPDX-License-Identifier: Apache-2.0
/// \file
/// Files: reading as a stream, text files as a whole.
#pragma once

#include "ul/base.h"
#include "ul/path.h"
#include "ul/stream.h"
#include "ul/string.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace ul {

class FileHandle;

/// Reads a file from its beginning. Other programs may change, replace or remove the file meanwhile.
class UL_EXPORT CWindowsFileInStream : public CBase, public virtual IInStream {
public:
    /// Opens the file.
    /// \throws CFileError if it cannot be opened or is a folder; on systems other than Windows also if the path is not
    ///         on drive `Z:` or its name cannot be written as UTF-8.
    explicit CWindowsFileInStream(const TPathImpl<CWindowsPathTraits>& path);
    CWindowsFileInStream(const CWindowsFileInStream&) = delete;
    CWindowsFileInStream& operator=(const CWindowsFileInStream&) = delete;
    ~CWindowsFileInStream() override;

    /// Reads exactly `size` bytes.
    /// \throws CError "Unexpected end of stream." with the properties "size", "available" and "path" if the file ends
    ///         before; CFileError if reading fails; CInvalidArgError "invalid size" if `size` is negative.
    void read(void* data, int size) override;
    /// Reads up to `size` bytes and returns their number; 0 at the end, and only there unless `size` is 0.
    /// \throws CFileError, CInvalidArgError as read() does.
    int readLax(void* data, int size) override;
    /// Whether the next read would find the end of the file as it is now.
    /// \throws CFileError if reading fails.
    bool isEndOfStream() override;

    /// Size of the file in bytes as it is now; 0 for what has no size, such as a pipe.
    /// \throws CFileError if the operating system does not tell.
    std::int64_t getLength() const;

private:
    std::unique_ptr<FileHandle> m_file;
    // Bytes known to be left: while there are any, the end needs no look at the file.
    std::int64_t m_expected;
    // Read by isEndOfStream() when it had to look.
    std::optional<unsigned char> m_peeked;
};

/// Reads a whole file as UTF-8 text. A byte order mark at its start is left out; line ends stay as they are.
/// \throws CFileError if the file cannot be read or is larger than 2^31 - 65537 bytes; CError "Invalid UTF-8 text."
///         with the properties "position" and "path" if it is no UTF-8.
UL_EXPORT String readUTF8TextFile(const TPathImpl<CWindowsPathTraits>& path);

/// Writes `text` as UTF-8 without a byte order mark in place of the file, as a whole: the text goes to a new file in
/// the same folder, is flushed to the disk, and takes the old file's name in one step. Whoever reads sees the old
/// content or the new. Outside Windows the old file's permission bits are kept; a symbolic link is replaced, not
/// followed.
/// \throws CFileError if that fails; the old file is as it was then, unless the error says that only the folder could
///         not be flushed. CError "Text cannot be encoded as UTF-8." before anything is written.
UL_EXPORT void writeUTF8TextFile(const TPathImpl<CWindowsPathTraits>& path, const String& text);

} // namespace ul
