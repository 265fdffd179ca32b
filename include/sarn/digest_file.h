// SPDX-License-Identifier: Apache-2.0
/// \file
/// Digests of files, and saved states as bytes. Header-only.
#pragma once

#include "sarn/one_call.h"

#include "ul/buffer_stream.h"
#include "ul/file.h"

#include <algorithm>
#include <cstdint>

namespace sarn {

/// Adds the rest of a file, from the current position of `file` to its end, to a digest. The file may grow or shrink
/// during the call.
/// \param progress called after each piece with two std::int64_t: the bytes that this call has added, and the total as
///                 the file is now. The total is never 0 and never the smaller one. An exception ends the call
/// \throws ul::CFileError; as IDigest::update() does.
template <class Progress>
void feedFile(IDigest& digest, ul::CWindowsFileInStream& file, Progress&& progress) {
    constexpr int pieceSize = 65536;
    ul::TBuffer<unsigned char> piece(pieceSize, -1);
    std::int64_t done = 0;
    while (const int size = file.readLax(piece.getData(), pieceSize)) {
        digest.update(piece.getData(), size);
        done += size;
        progress(done, std::max(done, file.getLength()));
    }
}

/// The digest of a file, with the type registered under `id`. `progress` is as for feedFile().
/// \throws ul::CFileError; as CDigestManager::getType() and IDigest::update() do.
template <class Progress>
ul::TBuffer<unsigned char> digestFile(const ul::CText& id, const ul::CWindowsPath& path, Progress&& progress) {
    const ul::P<IDigest> running = createDigest(id);
    ul::CWindowsFileInStream file(path);
    feedFile(*running, file, progress);
    return finish(*running);
}

/// The digest of a file, without progress.
inline ul::TBuffer<unsigned char> digestFile(const ul::CText& id, const ul::CWindowsPath& path) {
    return digestFile(id, path, [](std::int64_t, std::int64_t) {});
}

/// Saves the state of a digest: the bytes that IDigest::storeState() writes.
inline ul::TBuffer<unsigned char> saveState(const IDigest& digest) {
    ul::TBuffer<unsigned char> state;
    ul::CBufferStream stream(&state, 2.0);
    ul::CDataOutStream out(stream);
    digest.storeState(out);
    return state;
}

/// Loads a state that occupies all of `state`: IDigest::loadState(). After an error the digest is as after reset().
/// \throws ul::CError "Bytes follow the digest state."; as IDigest::loadState() does.
inline void loadState(IDigest& digest, ul::CBytes state) {
    try {
        ul::CBufferInStream stream(state.data(), state.getIntSize("loadState"));
        ul::CDataInStream in(stream);
        digest.loadState(in);
        if (!stream.isEndOfStream())
            throw ul::CError("Bytes follow the digest state.", "", -1, ul::CProps(), nullptr);
    } catch (...) {
        digest.reset();
        throw;
    }
}

} // namespace sarn
