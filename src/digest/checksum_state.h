// SPDX-License-Identifier: Apache-2.0
// What the two checksums have in common.
#pragma once

#include "ul/data_stream.h"

#include <cstdint>

namespace sarn {

/// zlib's function for a checksum.
using ChecksumFunction = unsigned long (*)(unsigned long, const unsigned char*, unsigned);

/// The checksum of nothing.
std::uint32_t getInitialChecksum(ChecksumFunction function);

/// Feeds `length` bytes; null data gives the initial value, whatever the length.
/// \throws ul::CBadStateError if `finished`; ul::CInvalidArgError for a negative length, naming `where`
void updateChecksum(ChecksumFunction function, const char* where, std::uint32_t& checksum, bool finished,
                    const void* data, int length);

/// The checksum's bytes, the least significant first.
/// \throws ul::CBadStateError unless `finished`
const unsigned char* getChecksumBytes(const std::uint32_t& checksum, bool finished);

void storeChecksumState(ul::CDataOutStream& stream, std::uint32_t checksum, bool finished);

/// Reads a state; nothing is changed if it is refused.
/// \throws ul::CError `badVersion`
void loadChecksumState(ul::CDataInStream& stream, const char* badVersion, std::uint32_t& checksum, bool& finished);

} // namespace sarn
