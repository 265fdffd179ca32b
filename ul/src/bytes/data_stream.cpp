// SPDX-License-Identifier: Apache-2.0
#include "ul/data_stream.h"

#include "errors/raise.h"

#include "ul/little_endian.h"

#include <array>

namespace ul {

static_assert(sizeof(unsigned) == 4, "integers in streams have four bytes");

CDataOutStream& CDataOutStream::writeInt32(int value) {
    return writeUInt32(static_cast<unsigned>(value));
}

CDataOutStream& CDataOutStream::writeUInt32(unsigned value) {
    std::array<unsigned char, 4> bytes;
    storeLittleEndian(bytes.data(), value);
    return write(bytes.data(), static_cast<int>(bytes.size()));
}

CDataOutStream& CDataOutStream::writeBool(bool value) {
    const unsigned char byte = value ? 1 : 0;
    return write(&byte, 1);
}

CDataOutStream& CDataOutStream::write(const void* data, int size) {
    m_stream.write(data, size, nullptr);
    return *this;
}

int CDataInStream::readInt32() {
    return static_cast<int>(readUInt32());
}

unsigned CDataInStream::readUInt32() {
    std::array<unsigned char, 4> bytes;
    m_stream.read(bytes.data(), static_cast<int>(bytes.size()));
    return loadLittleEndian<unsigned>(bytes.data());
}

bool CDataInStream::readBool() {
    unsigned char byte;
    m_stream.read(&byte, 1);
    if (byte > 1)
        raiseError("Invalid boolean in data stream.", CProps().add("value", toString(byte)));
    return byte == 1;
}

CDataInStream& CDataInStream::readBool(bool& value) {
    value = readBool();
    return *this;
}

CDataInStream& CDataInStream::read(void* data, int size) {
    m_stream.read(data, size);
    return *this;
}

} // namespace ul
