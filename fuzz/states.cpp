// SPDX-License-Identifier: Apache-2.0
// Whatever state is loaded, the digest goes on without harm, and stores what it was loaded from. One that is refused
// leaves it as it was.
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

/// A state that loads is stored as the bytes that it was loaded from, and the digest goes on without harm.
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
        // It was finished.
    }
    digest->finish();
    digest->getDigestData();
    Bytes result(static_cast<std::size_t>(digest->getDigestSize()));
    digest->storeDigestData(result.data());
    digest->reset();
}

/// Takes the digest from the input's first byte.
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
