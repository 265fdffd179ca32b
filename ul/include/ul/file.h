// SPDX-License-Identifier: Apache-2.0
/// \file
/// Files: reading as a stream, text files as a whole.
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

/// Reads a regular file from its beginning. Other programs may change, replace or remove the file meanwhile.
class UL_EXPORT CWindowsFileInStream : public CBase, public virtual IInStream {
public:
    /// Opens the file; links are followed. Nothing waits: a FIFO without a writer is refused at once.
    /// \throws CFileError if it cannot be opened or is not a regular file (a folder, FIFO, device or socket); on
    ///         systems other than Windows also if the path is not on drive `Z:` or its name cannot be written as UTF-8.
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
    /// Whether everything has been read. As long as fewer bytes were read than the file had when it was opened, the
    /// answer is false without a look at the file; then it looks whether there are more. So a file that is cut while
    /// it is read ends with a readLax() of 0 bytes, and the answer is true from then on.
    /// \throws CFileError if reading fails.
    bool isEndOfStream() override;

    /// Size of the file in bytes as it is now; 0 for one whose content the system makes up when it is read.
    /// \throws CFileError if the operating system does not tell.
    std::int64_t getLength() const;

private:
    std::unique_ptr<FileHandle> m_file;
    // Bytes known to be left: while there are any, the end needs no look at the file.
    std::int64_t m_expected;
    // Read by isEndOfStream() when it had to look.
    std::optional<unsigned char> m_peeked;
};

/// Reads a whole regular file as UTF-8 text. A byte order mark at its start is left out; line ends stay as they are.
/// Every copy that this makes of the content is wiped; the returned text is the caller's, see wipe(String&).
/// \throws CFileError if the file cannot be read, is not a regular file, or is larger than 2^31 - 65537 bytes; CError
///         "Invalid UTF-8 text." with the properties "position" and "path" if it is not UTF-8.
UL_EXPORT String readUTF8TextFile(const TPathImpl<CWindowsPathTraits>& path);

/// The same for a file of at most `maxSize` bytes. A larger one is refused before it is read, with a CFileError.
/// \throws CInvalidArgError "invalid size" if `maxSize` is negative.
UL_EXPORT String readUTF8TextFile(const TPathImpl<CWindowsPathTraits>& path, int maxSize);

/// Writes `text` as UTF-8 without a byte order mark in place of the file, as a whole: the text goes to a new file in
/// the same folder, is flushed to the disk, and takes the old file's name in one step. Whoever reads sees the old
/// content or the new. If the process is killed meanwhile, the new file may stay under a name like `~1F80C4.tmp`.
///
/// A symbolic link is replaced, not followed. Outside Windows the new file belongs to the caller. It has the old file's
/// read, write and execute bits if that one has the same owner and group, otherwise at most those that any new file
/// gets, and no others in any case. A text that starts with U+FEFF is read back without that character, which is a byte
/// order mark in a file. \throws CFileError if that fails, if the old file may not be written, or if something other
/// than a regular file or
///         a link has the name; the old file is as it was then. CError "Text cannot be encoded as UTF-8." before
///         anything is written.
UL_EXPORT void writeUTF8TextFile(const TPathImpl<CWindowsPathTraits>& path, const String& text);

/// Decodes all bytes that were read from a file, a byte order mark too, as UTF-8.
/// \throws CError "Invalid UTF-8 text." with the properties "position" and "path".
UL_EXPORT String decodeUTF8(const TBuffer<unsigned char>& content, const TPathImpl<CWindowsPathTraits>& path);

} // namespace ul
