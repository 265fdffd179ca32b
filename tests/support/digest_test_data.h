// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/expect.h"

#include "sarn/digest.h"

#include "ul/buffer_stream.h"

namespace sarn_test {

constexpr const char* digestIDs[] = {"md4",     "md5",   "sha1",     "sha256",
                                     "adler32", "crc32", "md4-sha1", "md4-sha1-adler32"};

inline std::string getDigestTestName(const testing::TestParamInfo<const char*>& info) {
    std::string name = info.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

inline ul::P<sarn::IDigest> createDigest(const std::string& id) {
    return sarn::CDigestManager::get()->getType(id.c_str())->createDigest();
}

/// Feeds `bytes`. Null data would reset a checksum, so no bytes have an address too.
inline void feed(sarn::IDigest& digest, const Bytes& bytes) {
    digest.update(bytes.empty() ? "" : static_cast<const void*>(bytes.data()), static_cast<int>(bytes.size()));
}

/// A running digest of `bytes`.
inline ul::P<sarn::IDigest> createDigest(const std::string& id, const Bytes& bytes) {
    ul::P<sarn::IDigest> digest = createDigest(id);
    feed(*digest, bytes);
    return digest;
}

inline Bytes getResult(const sarn::IDigest& digest) {
    Bytes result(static_cast<std::size_t>(digest.getDigestSize()));
    digest.storeDigestData(result.data());
    return result;
}

/// The result at the address that the digest returns.
inline Bytes getData(const sarn::IDigest& digest) {
    const unsigned char* const data = digest.getDigestData();
    return Bytes(data, data + digest.getDigestSize());
}

inline Bytes finish(sarn::IDigest& digest) {
    digest.finish();
    return getResult(digest);
}

/// The digest of `bytes` in one piece.
inline Bytes getDigest(const std::string& id, const Bytes& bytes) {
    return finish(*createDigest(id, bytes));
}

inline Bytes storeState(const sarn::IDigest& digest) {
    ul::TBuffer<unsigned char> buffer;
    ul::CBufferStream stream(&buffer, 2.0);
    ul::CDataOutStream out(stream);
    digest.storeState(out);
    return toBytes(buffer);
}

/// Returns the number of bytes after the state.
inline int loadState(sarn::IDigest& digest, const Bytes& state) {
    ul::CBufferInStream stream(state.data(), static_cast<int>(state.size()));
    ul::CDataInStream in(stream);
    digest.loadState(in);
    return stream.getRemaining();
}

inline ul::P<sarn::IDigest> resumeDigest(const std::string& id, const Bytes& state) {
    ul::P<sarn::IDigest> digest = createDigest(id);
    EXPECT_EQ(loadState(*digest, state), 0) << "bytes follow the state";
    return digest;
}

/// `state` with the 32-bit word at `offset` replaced.
inline Bytes withWord(Bytes state, std::size_t offset, unsigned value) {
    for (std::size_t i = 0; i < 4; ++i)
        state.at(offset + i) = static_cast<unsigned char>(value >> 8 * i);
    return state;
}

/// The state of a running digest of a pattern of `size` bytes.
inline Bytes getRunningState(const char* id, int size = 100) {
    return storeState(*createDigest(id, makePattern(size)));
}

/// States of all digests, written by other implementations.
inline std::vector<Vector> readStates() {
    return readVectors("digest_states.vec", {"size", "finished", "read", "again", "state"});
}

} // namespace sarn_test
