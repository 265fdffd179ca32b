// SPDX-License-Identifier: Apache-2.0
/// \file
/// What digests keep and save, and the records they save it in. The template of hashes needs it in hosts, too, which
/// call none of it. docs/digest-state.md gives every byte.
#pragma once

#include "sarn/digest_context.h"
#include "sarn/digest_interfaces.h"

#include <array>

namespace sarn::detail {

/// What a hash keeps beside its context.
struct HashState {
    /// What the context last gave. Its block is never smaller than a digest.
    ul::TBuffer<unsigned char> result;
    /// Whether the context has been set up.
    bool initialized = false;
    /// Whether the result is that of the data.
    bool finished = false;
};

/// What a checksum keeps.
struct ChecksumState {
    /// The least significant byte first, whatever the processor.
    std::array<unsigned char, 4> checksum;
    /// Whether the input has ended.
    bool finished = false;
};

/// What a combination keeps beside its two digests.
struct CombinationState {
    /// Both results. Filled by each getDigestData().
    mutable ul::TBuffer<unsigned char> result;
    /// Whether the input has ended.
    bool finished = false;
    /// Whether the result came from a stream and is to be delivered as it is.
    bool resultReady = false;
};

/// Writes the record of a hash.
/// \param context a view of a copy of its context, whose numbers change their byte order on the way
SARN_EXPORT void storeHash(ul::CDataOutStream& stream, const HashContext& context, int digestSize,
                           const HashState& state);
/// Reads and checks what storeHash() has written: the context into the object that is viewed, and all else into the
/// result.
/// \throws ul::CError "Unsupported OpenSSL digest state data version."; COpenSSLVersionMismatchError; ul::CError "Bad
///         OpenSSL digest size in state stream.", "Bad OpenSSL digest context size in state stream.", "Bad digest
///         result length in state stream.", "Bad OpenSSL digest context in state stream."
SARN_EXPORT HashState loadHash(ul::CDataInStream& stream, const HashContext& context, int digestSize);

/// Writes the record of a checksum.
void storeChecksum(ul::CDataOutStream& stream, const ChecksumState& state);
/// Reads and checks what storeChecksum() has written.
/// \throws ul::CError `badVersion` if its version is another
ChecksumState loadChecksum(ul::CDataInStream& stream, const char* badVersion);

/// Writes the record of a combination of two digests, theirs included.
void storeCombination(ul::CDataOutStream& stream, IDigest& first, IDigest& second, int digestSize,
                      const CombinationState& state);
/// Reads and checks what storeCombination() has written. The two digests load their own records. If anything is refused
/// they get the states back that they stored before.
/// \throws ul::CError "Unsupported version of TDigestCombined state data.", "Bad digest result length in state
///         stream."; whatever the two digests throw
CombinationState loadCombination(ul::CDataInStream& stream, IDigest& first, IDigest& second, int digestSize);

} // namespace sarn::detail
