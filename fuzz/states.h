// SPDX-License-Identifier: Apache-2.0
// The property of every saved state.
#pragma once

#include "property.h"

#include "sarn/digest.h"

#include "ul/buffer_stream.h"
#include "ul/data_stream.h"

namespace sarn_fuzz {

/// A state that loads is stored as the bytes that it was loaded from, and the digest goes on without harm.
inline void checkState(const char* id, const Input& input) {
    const ul::P<sarn::IDigest> digest = sarn::CDigestManager::get()->getType(id)->createDigest();
    ul::CBufferInStream stream(input.getData(), input.getSize());
    ul::CDataInStream in(stream);
    try {
        digest->loadState(in);
    } catch (const ul::CError&) {
        digest->reset();
        return;
    }
    const int taken = input.getSize() - stream.getRemaining();
    Buffer stored;
    ul::CBufferStream sink(&stored, 2.0);
    ul::CDataOutStream out(sink);
    digest->storeState(out);
    require(toBytes(stored) == Bytes(input.getData(), input.getData() + taken), "what loads is stored as it was");
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

} // namespace sarn_fuzz
