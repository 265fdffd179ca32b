// SPDX-License-Identifier: Apache-2.0
/// \file
/// State of digests and the records in which it is saved. Public because TDigest_OpenSSL uses it in hosts; hosts do not
/// call it. docs/digest-state.md gives every byte.
#pragma once

#include "sarn/digest_context.h"
#include "sarn/digest_interfaces.h"

#include <array>

namespace sarn::detail {

/// State of a hash besides its context.
struct HashState {
    /// The last result of the context. Its block is never smaller than a digest.
    ul::TBuffer<unsigned char> result;
    /// Whether the context has been initialised.
    bool initialized = false;
    /// Whether the input has ended and the result is valid.
    bool finished = false;
};

/// State of a checksum.
struct ChecksumState {
    /// Least significant byte first on every processor.
    std::array<unsigned char, 4> checksum;
    /// Whether the input has ended.
    bool finished = false;
};

/// State of a combination besides its two digests.
struct CombinationState {
    /// Both results. getDigestData() fills it on each call.
    mutable ul::TBuffer<unsigned char> result;
    /// Whether the input has ended.
    bool finished = false;
    /// Whether the result came from a stream and is delivered unchanged.
    bool resultReady = false;
};

/// Writes the record of a hash.
/// \param context a view of a copy of the context; the byte order of its integers is changed in place
SARN_EXPORT void storeHash(ul::CDataOutStream& stream, const HashContext& context, int digestSize,
                           const HashState& state);
/// Reads and checks a record of storeHash(). The context goes into the viewed object, everything else into the returned
/// state.
/// \throws ul::CError "Unsupported OpenSSL digest state data version."; COpenSSLVersionMismatchError; ul::CError "Bad
///         OpenSSL digest size in state stream.", "Bad OpenSSL digest context size in state stream.", "Bad digest
///         result length in state stream.", "Bad OpenSSL digest context in state stream.".
SARN_EXPORT HashState loadHash(ul::CDataInStream& stream, const HashContext& context, int digestSize);

/// Writes the record of a checksum.
void storeChecksum(ul::CDataOutStream& stream, const ChecksumState& state);
/// Reads and checks a record of storeChecksum().
/// \throws ul::CError `badVersion` for any other version.
ChecksumState loadChecksum(ul::CDataInStream& stream, const char* badVersion);

/// Writes the record of a combination, with those of its two digests.
void storeCombination(ul::CDataOutStream& stream, IDigest& first, IDigest& second, int digestSize,
                      const CombinationState& state);
/// Reads and checks a record of storeCombination(). The two digests load their own records. After a failure they get
/// back the states that they had stored before.
/// \throws ul::CError "Unsupported version of TDigestCombined state data.", "Bad digest result length in state
///         stream."; any error of the two digests.
CombinationState loadCombination(ul::CDataInStream& stream, IDigest& first, IDigest& second, int digestSize);

} // namespace sarn::detail
