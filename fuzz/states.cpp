// SPDX-License-Identifier: Apache-2.0
// A digest works with any state that it loads, and stores the same bytes again. A state that is refused leaves the
// digest unchanged.
#include "property.h"
#include "targets.h"

#include "sarn/digest.h"

#include "ul/buffer_stream.h"
#include "ul/data_stream.h"

#include <initializer_list>

namespace sarn_fuzz {

namespace {

Bytes storeState(const sarn::IDigest& digest) {
    Buffer state;
    ul::CBufferStream sink(&state, 2.0);
    ul::CDataOutStream out(sink);
    digest.storeState(out);
    return toBytes(state);
}

/// The digest stores a loaded state as the same bytes and works with it.
void checkState(const char* id, const Input& input) {
    const ul::P<sarn::IDigest> digest = sarn::CDigestManager::get()->getType(id)->createDigest();
    const Bytes before = storeState(*digest);
    ul::CBufferInStream stream(input.getData(), input.getSize());
    ul::CDataInStream in(stream);
    try {
        digest->loadState(in);
    } catch (const ul::CError&) {
        require(storeState(*digest) == before, "a refused state changes nothing");
        return;
    }
    const int taken = input.getSize() - stream.getRemaining();
    require(storeState(*digest) == Bytes(input.getData(), input.getData() + taken), "what loads is stored as it was");
    try {
        digest->update("more", 4);
    } catch (const ul::CBadStateError&) {
        // The digest was finished.
    }
    digest->finish();
    digest->getDigestData();
    Bytes result(static_cast<std::size_t>(digest->getDigestSize()));
    digest->storeDigestData(result.data());
    digest->reset();
}

/// The first byte of the input selects the digest.
void checkChosen(std::initializer_list<const char*> ids, Input input) {
    const unsigned choice = input.take();
    checkState(ids.begin()[choice % ids.size()], input);
}

} // namespace

void fuzzStateOfDigest(const std::uint8_t* data, std::size_t size) {
    checkChosen({"md4", "md5", "sha1", "sha256"}, Input(data, size));
}

void fuzzStateOfChecksum(const std::uint8_t* data, std::size_t size) {
    checkChosen({"adler32", "crc32"}, Input(data, size));
}

void fuzzStateOfCombination(const std::uint8_t* data, std::size_t size) {
    checkChosen({"md4-sha1", "md4-sha1-adler32"}, Input(data, size));
}

} // namespace sarn_fuzz
