// SPDX-License-Identifier: Apache-2.0
#include "ul/buffer_stream.h"

#include "errors/raise.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace ul {

namespace {

void checkSize(const char* where, int size) {
    if (size < 0)
        raiseInvalidArg(where, "invalid size");
}

} // namespace

CBufferStream::CBufferStream(TBuffer<unsigned char>* buffer, double growthFactor)
    : m_buffer(buffer), m_growthFactor(growthFactor) {}

CBufferStream::~CBufferStream() = default;

void CBufferStream::write(const void* data, int size, IWriteBarrier* barrier) {
    checkSize("CBufferStream::write", size);
    if (barrier)
        barrier->beforeWrite(data, size);
    const long long needed = static_cast<long long>(m_buffer->getUsed()) + size;
    // Not for bytes of the buffer itself, which move when it grows: insert() handles them.
    if (needed > m_buffer->getAllocated() && needed <= INT_MAX && !m_buffer->contains(data)) {
        const double wanted = static_cast<double>(m_buffer->getUsed()) * m_growthFactor;
        m_buffer->ensureAllocated(static_cast<int>(std::clamp(wanted, static_cast<double>(needed), double{INT_MAX})));
    }
    m_buffer->insert(m_buffer->getUsed(), data, size);
}

CBufferInStream::CBufferInStream(const void* data, int size)
    : m_data(static_cast<const unsigned char*>(data)), m_size(size) {
    checkSize("CBufferInStream::CBufferInStream", size);
}

CBufferInStream::CBufferInStream(const TBuffer<unsigned char>& buffer)
    : CBufferInStream(buffer.getData(), buffer.getUsed()) {}

CBufferInStream::~CBufferInStream() = default;

void CBufferInStream::read(void* data, int size) {
    checkSize("CBufferInStream::read", size);
    if (size > m_size)
        raiseError("Unexpected end of stream.",
                   CProps().add("size", toString(size)).add("available", toString(m_size)));
    readLax(data, size);
}

int CBufferInStream::readLax(void* data, int size) {
    checkSize("CBufferInStream::readLax", size);
    const int count = std::min(size, m_size);
    if (count > 0) {
        std::memcpy(data, m_data, static_cast<std::size_t>(count));
        m_data += count;
        m_size -= count;
    }
    return count;
}

} // namespace ul
