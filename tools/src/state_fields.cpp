// SPDX-License-Identifier: Apache-2.0
#include "saved_state.h"

#include <cstdio>

namespace tool {

namespace {

/// Reads fields of a state and adds them to a record.
class Fields {
public:
    Fields(Record& record, ul::CDataInStream& stream, std::string prefix)
        : m_record(record), m_stream(stream), m_prefix(std::move(prefix)) {}

    int addNumber(const char* name) {
        const int number = m_stream.readInt32();
        m_record.add(m_prefix + name, std::int64_t{number});
        return number;
    }
    void addHexNumber(const char* name) {
        char digits[16];
        std::snprintf(digits, sizeof digits, "0x%08X", m_stream.readUInt32());
        m_record.add(m_prefix + name, digits);
    }
    void addBytes(const char* name, int size) {
        ul::TBuffer<unsigned char> bytes(size, -1);
        m_stream.read(bytes.getData(), size);
        m_record.add(m_prefix + name, ul::toHex(bytes));
    }
    void addFlag(const char* name) { m_record.add(m_prefix + name, m_stream.readBool()); }
    /// Returns the number of bits.
    std::int64_t addBits() {
        const std::uint64_t low = m_stream.readUInt32();
        const auto bits = static_cast<std::int64_t>(low | std::uint64_t{m_stream.readUInt32()} << 32);
        m_record.add(m_prefix + "bits so far", bits);
        return bits;
    }

private:
    Record& m_record;
    ul::CDataInStream& m_stream;
    std::string m_prefix;
};

std::int64_t addHash(Fields fields) {
    constexpr int blockSize = 64, sizeOfBitsAndFill = 12, sha256Size = 32;
    fields.addHexNumber("OpenSSL version");
    const int digestSize = fields.addNumber("digest size");
    const int contextSize = fields.addNumber("context size");
    const int sizeOfResultSize = digestSize == sha256Size ? 4 : 0;
    fields.addBytes("chaining values", contextSize - blockSize - sizeOfBitsAndFill - sizeOfResultSize);
    const std::int64_t bits = fields.addBits();
    fields.addBytes("block", blockSize);
    fields.addNumber("fill of the block");
    if (sizeOfResultSize > 0)
        fields.addNumber("result size");
    fields.addBytes("result", fields.addNumber("result length"));
    fields.addFlag("initialized");
    fields.addFlag("finished");
    return bits / 8;
}

} // namespace

std::int64_t addFields(Record& record, ul::CDataInStream& stream, const std::string& id, const std::string& prefix) {
    Fields fields(record, stream, prefix);
    fields.addNumber("version");
    if (id == "adler32" || id == "crc32") {
        fields.addHexNumber("checksum");
        fields.addFlag("finished");
        return -1;
    }
    const std::size_t split = id.rfind('-');
    if (split == std::string::npos)
        return addHash(fields);
    const std::string first = id.substr(0, split), second = id.substr(split + 1);
    const std::int64_t size = addFields(record, stream, first, prefix + first + ": ");
    addFields(record, stream, second, prefix + second + ": ");
    fields.addBytes("result", fields.addNumber("result length"));
    fields.addFlag("finished");
    fields.addFlag("result ready");
    return size;
}

} // namespace tool
