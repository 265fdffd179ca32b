// SPDX-License-Identifier: Apache-2.0
// Saved states of digests in files. The command writes a line of text: the identifier, the number of bytes so far, and
// the state of the library in hexadecimal digits. It also reads the bytes that the library writes.
#pragma once

#include "report.h"

#include <sarn/host.h>

#include <cstdint>
#include <optional>
#include <string>

namespace tool {

struct SavedState {
    /// Identifier of the digest.
    std::string id;
    /// Number of bytes so far; nothing if a checksum was saved without it.
    std::optional<std::int64_t> size;
    ul::TBuffer<unsigned char> bytes;
    /// Whether the file is a line of text.
    bool isText = false;
};

/// Reads a file, and checks it with the library.
/// \param id the digest; if it is empty, the file decides
/// \throws Problem if the state is damaged or of another digest, or of one of several digests whose states look alike.
SavedState readState(const std::string& name, const std::string& id);

/// The line of text for a state.
std::string formatState(const std::string& id, std::int64_t size, ul::CBytes bytes);

/// Adds the fields of a state that the library has accepted. Returns the number of bytes that were hashed so far; -1
/// for a checksum.
std::int64_t addFields(Record& record, ul::CDataInStream& stream, const std::string& id, const std::string& prefix);

} // namespace tool
