// SPDX-License-Identifier: Apache-2.0
#include "digest/checksum_state.h"

#include "frame/raise.h"

#include "sarn/digest_support.h"

namespace sarn {

namespace {

constexpr int stateVersion = 1;

} // namespace

std::uint32_t getInitialChecksum(ChecksumFunction function) {
    return static_cast<std::uint32_t>(function(0, nullptr, 0));
}

void updateChecksum(ChecksumFunction function, const char* where, std::uint32_t& checksum, bool finished,
                    const void* data, int length) {
    if (finished)
        raiseDigestIsFinished();
    if (data && length < 0)
        raiseBadDigestDataSize(where);
    // zlib takes null data for a request of the initial value, except that adler32() reads a single byte unasked.
    const unsigned size = data ? static_cast<unsigned>(length) : 0;
    checksum = static_cast<std::uint32_t>(function(checksum, static_cast<const unsigned char*>(data), size));
}

const unsigned char* getChecksumBytes(const std::uint32_t& checksum, bool finished) {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "The result is the checksum as it lies in memory, which must be the least significant byte first."
#endif
    if (!finished)
        raiseDigestIsNotFinished();
    return reinterpret_cast<const unsigned char*>(&checksum);
}

void storeChecksumState(ul::CDataOutStream& stream, std::uint32_t checksum, bool finished) {
    stream.writeInt32(stateVersion).writeUInt32(checksum).writeBool(finished);
}

void loadChecksumState(ul::CDataInStream& stream, const char* badVersion, std::uint32_t& checksum, bool& finished) {
    if (stream.readInt32() != stateVersion)
        raiseError(badVersion);
    const std::uint32_t loaded = stream.readUInt32();
    finished = stream.readBool();
    checksum = loaded;
}

} // namespace sarn
