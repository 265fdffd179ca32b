// SPDX-License-Identifier: Apache-2.0
#include "saved_state.h"

#include "identifiers.h"
#include "input.h"
#include "status.h"

#include <algorithm>
#include <charconv>

namespace tool {

namespace {

constexpr int sizeLimit = 1 << 16;

[[noreturn]] void refuse(const std::string& name, const std::string& reason) {
    throw Problem(NotVerified, describeInput(name) + " is not a saved state that can be used: " + reason);
}

/// Takes the next word of a line.
std::string_view takeWord(std::string_view& line) {
    const std::size_t end = std::min(line.find(' '), line.size());
    const std::string_view word = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    return word;
}

/// The error with which the library refuses a state; empty if it accepts it.
std::string tryToLoad(const std::string& id, ul::CBytes bytes) {
    try {
        sarn::loadState(*sarn::createDigest(id), bytes);
    } catch (const ul::CError& error) {
        return error.what();
    }
    return "";
}

SavedState parseText(const std::string& name, std::string_view line) {
    SavedState state;
    state.isText = true;
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
        line.remove_suffix(1);
    state.id = takeWord(line);
    const std::string_view size = takeWord(line);
    const char* const end = size.data() + size.size();
    std::int64_t number = 0;
    const std::from_chars_result result = std::from_chars(size.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end || number < 0)
        refuse(name, "its line is not an identifier, a number of bytes and hexadecimal digits");
    state.size = number;
    try {
        const auto bytes = ul::fromHex(line);
        state.bytes.init(bytes.getData(), bytes.getUsed());
    } catch (const ul::CInvalidArgError& error) {
        refuse(name, error.what());
    }
    return state;
}

/// Finds out which digest wrote the bytes.
std::string identify(const std::string& name, ul::CBytes bytes) {
    std::string found, reasons;
    for (const std::string& id : getDigestIds()) {
        std::string reason = tryToLoad(id, bytes);
        if (reason.empty()) {
            found.append(found.empty() ? "" : " or ").append(id);
            continue;
        }
        if (reason.back() == '.')
            reason.pop_back();
        reasons.append(reasons.empty() ? "" : "; ").append(id).append(": ").append(reason);
    }
    if (found.empty())
        refuse(name, "no digest accepts it (" + reasons + ")");
    if (found.find(' ') != std::string::npos)
        throw Problem(Misuse, describeInput(name) + " may be a state of " + found + ": say which with --id");
    return found;
}

} // namespace

SavedState readState(const std::string& name, const std::string& id) {
    Input input(name);
    const auto content = readAll(input, sizeLimit);
    const bool isText = content.getUsed() > 0 && content.getData()[0] != 1; // the version of the library's format
    SavedState state;
    if (isText) {
        state = parseText(name, ul::CBytes(content).asText());
        const auto ids = getDigestIds();
        if (std::find(ids.begin(), ids.end(), state.id) == ids.end())
            refuse(name, "there is no digest '" + state.id + "'");
        if (!id.empty() && state.id != id)
            refuse(name, "it is a state of " + state.id + ", not of " + id);
    } else {
        state.bytes.init(content.getData(), content.getUsed());
        state.id = id.empty() ? identify(name, content) : id;
    }
    const std::string reason = tryToLoad(state.id, state.bytes);
    if (!reason.empty())
        refuse(name, reason);
    Record fields;
    ul::CBufferInStream stream(state.bytes);
    ul::CDataInStream in(stream);
    const std::int64_t hashed = addFields(fields, in, state.id, "");
    if (hashed != -1 && state.size.value_or(hashed) != hashed)
        refuse(name, "it says " + std::to_string(*state.size) + " bytes, but its hash has " + std::to_string(hashed));
    if (hashed != -1)
        state.size = hashed;
    return state;
}

std::string formatState(const std::string& id, std::int64_t size, ul::CBytes bytes) {
    return id + " " + std::to_string(size) + " " + ul::toHex(bytes) + "\n";
}

} // namespace tool
