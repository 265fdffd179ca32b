// SPDX-License-Identifier: Apache-2.0
/// \file
/// Files: reading as a stream, and reading and writing whole text files.
#pragma once

#include "ul/base.h"
#include "ul/buffer.h"
#include "ul/path.h"
#include "ul/stream.h"
#include "ul/string.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace ul {

class FileHandle;

/// Reads a regular file from its beginning. Other programs may change, replace or remove the file at the same time.
class UL_EXPORT CWindowsFileInStream : public CBase, public virtual IInStream {
public:
    /// Opens the file, following links. It never waits: a FIFO without a writer is refused at once.
    /// \throws CFileError if the file cannot be opened or is not a regular file (a folder, FIFO, device or socket);
    ///         outside Windows also if the path is not on drive `Z:` or its name cannot be encoded as UTF-8.
    explicit CWindowsFileInStream(const TPathImpl<CWindowsPathTraits>& path);
    CWindowsFileInStream(const CWindowsFileInStream&) = delete;
    CWindowsFileInStream& operator=(const CWindowsFileInStream&) = delete;
    ~CWindowsFileInStream() override;

    /// Reads exactly `size` bytes.
    /// \throws CError "Unexpected end of stream." with the properties "size", "available" and "path" if the file ends
    ///         first; CFileError if reading fails; CInvalidArgError "invalid size" if `size` is negative.
    void read(void* data, int size) override;
    /// Reads up to `size` bytes and returns how many. Unless `size` is 0, it returns 0 at the end only.
    /// \throws CFileError, CInvalidArgError as read() does.
    int readLax(void* data, int size) override;
    /// Whether everything has been read. While fewer bytes have been read than the file had when it was opened, the
    /// answer is false without asking the system; after that, this looks for more bytes. If the file is cut short in
    /// the meantime, readLax() returns 0 and from then on the answer is true, until the file grows again.
    /// \throws CFileError if reading fails.
    bool isEndOfStream() override;

    /// Current size of the file in bytes; 0 for a file that the system generates when it is read.
    /// \throws CFileError if the operating system cannot report it.
    std::int64_t getLength() const;

private:
    std::unique_ptr<FileHandle> m_file;
    // Number of bytes known to be left: while there are any, the end needs no system call.
    std::int64_t m_expected;
    // A byte that isEndOfStream() had to read.
    std::optional<unsigned char> m_peeked;
};

/// Reads a whole regular file as UTF-8 text. A byte order mark at the start is dropped; line ends are kept. All
/// intermediate copies of the content are wiped. The caller owns the returned text; see wipe(String&).
/// \throws CFileError if the file cannot be read, is not a regular file, or is larger than 2^31 - 65537 bytes; CError
///         "Invalid UTF-8 text." with the properties "position" and "path" if it is not UTF-8.
UL_EXPORT String readUTF8TextFile(const TPathImpl<CWindowsPathTraits>& path);

/// Reads a file of at most `maxSize` bytes. A larger one is refused with a CFileError before it is read.
/// \throws CInvalidArgError "invalid size" if `maxSize` is negative; otherwise as the overload without a limit.
UL_EXPORT String readUTF8TextFile(const TPathImpl<CWindowsPathTraits>& path, int maxSize);

/// Atomically writes or replaces a file with `text` as UTF-8 without a byte order mark. The text goes to a new file in
/// the same folder, is flushed to the disk, and takes the old file's name in one step: readers see either the old
/// content or the new. A process that is killed in between may leave the new file under a name like `~1F80C4.tmp`.
///
/// A symbolic link is replaced, not followed. Outside Windows the new file belongs to the caller. If the old file has
/// the same owner and group, the new one gets its read, write and execute bits; otherwise it gets its read and write
/// bits as far as any new file would. It never gets other bits. If the text starts with U+FEFF, reading it back drops
/// that character as a byte order mark.
/// \throws CFileError if a step fails, if the old file is not writable, or if the name belongs to something other than
///         a regular file or a link; the old file is unchanged then. CError "Text cannot be encoded as UTF-8." before
///         anything is written.
UL_EXPORT void writeUTF8TextFile(const TPathImpl<CWindowsPathTraits>& path, const String& text);

/// Decodes the bytes of a file as UTF-8; a byte order mark becomes U+FEFF. `path` names the file in errors.
/// \throws CError "Invalid UTF-8 text." with the properties "position" and "path".
UL_EXPORT String decodeUTF8(const TBuffer<unsigned char>& content, const TPathImpl<CWindowsPathTraits>& path);

} // namespace ul
