// SPDX-License-Identifier: Apache-2.0
#include "sarn/digest_support.h"

#include "frame/raise.h"

#include <algorithm>
#include <array>

namespace sarn::detail {

namespace {

// A length is not believed before that many bytes have come.
constexpr int chunkSize = 4096;

} // namespace

void raiseDigestIsFinished() {
    throw ul::CBadStateError("IDigest::update cannot be called after finish has been called.");
}

void raiseDigestIsNotFinished() {
    throw ul::CBadStateError("IDigest::finish has not been called yet.");
}

void raiseDigestError(const char* message) {
    raiseError(message);
}

void raiseBadDigestDataSize(const char* where) {
    raiseInvalidArg(where, "invalid data size");
}

void storeDigestResult(ul::CDataOutStream& stream, const ul::TBuffer<unsigned char>& result) {
    stream.writeInt32(result.getUsed()).write(result.getData(), result.getUsed());
}

void loadDigestResult(ul::CDataInStream& stream, ul::TBuffer<unsigned char>& result, int digestSize) {
    const int length = stream.readInt32();
    if (length < 0)
        raiseError("Bad digest result length in state stream.");
    // A shorter result is read in the digest's size all the same.
    result.ensureAllocated(digestSize);
    std::fill_n(result.getData(), digestSize, static_cast<unsigned char>(0));
    std::array<unsigned char, chunkSize> chunk;
    while (result.getUsed() < length) {
        const int count = std::min(length - result.getUsed(), chunkSize);
        stream.read(chunk.data(), count);
        result.insert(result.getUsed(), chunk.data(), count);
    }
}

void replaceDigestResult(ul::TBuffer<unsigned char>& result, const ul::TBuffer<unsigned char>& loaded, int digestSize) {
    const int size = std::max(loaded.getUsed(), digestSize);
    result.ensureAllocated(size);
    std::copy_n(loaded.getData(), size, result.getData());
    result.setUsed(loaded.getUsed());
}

} // namespace sarn::detail
