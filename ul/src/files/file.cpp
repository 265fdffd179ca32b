// SPDX-License-Identifier: Apache-2.0
#include "ul/file.h"

#include "errors/raise.h"
#include "files/file_handle.h"
#include "files/whole_file.h"

#include <algorithm>

namespace ul {

CWindowsFileInStream::CWindowsFileInStream(const TPathImpl<CWindowsPathTraits>& path)
    : m_file(FileHandle::openForReading(path)), m_expected(m_file->getSize()) {}

CWindowsFileInStream::~CWindowsFileInStream() = default;

void CWindowsFileInStream::read(void* data, int size) {
    int done = 0;
    while (done < size || size < 0) {
        const int count = readLax(static_cast<unsigned char*>(data) + done, size - done);
        if (count == 0)
            raiseError(
                "Unexpected end of stream.",
                CProps().add("size", toString(size)).add("available", toString(done)).add("path", m_file->getPath()));
        done += count;
    }
}

int CWindowsFileInStream::readLax(void* data, int size) {
    if (size < 0)
        raiseInvalidArg("CWindowsFileInStream::read", "invalid size");
    if (size == 0)
        return 0;
    if (m_peeked) {
        *static_cast<unsigned char*>(data) = *m_peeked;
        m_peeked.reset();
        return 1 + readLax(static_cast<unsigned char*>(data) + 1, size - 1);
    }
    const int count = m_file->read(data, size);
    // A truncated file ends here, whatever length it had when it was opened.
    m_expected = count == 0 ? 0 : std::max<std::int64_t>(m_expected - count, 0);
    return count;
}

bool CWindowsFileInStream::isEndOfStream() {
    if (m_expected > 0 || m_peeked)
        return false;
    unsigned char next;
    if (m_file->read(&next, 1) == 0)
        return true;
    m_peeked = next;
    return false;
}

std::int64_t CWindowsFileInStream::getLength() const {
    return m_file->getSize();
}

} // namespace ul
