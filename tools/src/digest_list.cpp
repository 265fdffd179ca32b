// SPDX-License-Identifier: Apache-2.0
#include "digest_list.h"

#include "input.h"
#include "report.h"
#include "status.h"

#include <sarn/host.h>

#include <algorithm>
#include <optional>

namespace tool {

namespace {

struct Entry {
    std::string name;
    ul::TBuffer<unsigned char> digest;
};

/// An optional backslash, the digest, a space, a space or an asterisk, and the name, which the backslash marks as
/// escaped. Nothing if the line is anything else.
std::optional<Entry> parseEntry(std::string_view line, std::size_t digestSize) {
    const bool isEscaped = !line.empty() && line.front() == '\\';
    line.remove_prefix(isEscaped ? 1 : 0);
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    const std::size_t digits = 2 * digestSize;
    if (line.size() < digits + 3 || line[digits] != ' ' || (line[digits + 1] != ' ' && line[digits + 1] != '*'))
        return std::nullopt;
    Entry entry;
    const std::string_view name = line.substr(digits + 2);
    entry.name = isEscaped ? unescapeName(name) : std::string(name);
    try {
        const auto digest = ul::fromHex(line.substr(0, digits));
        entry.digest.init(digest.getData(), digest.getUsed());
    } catch (const ul::CInvalidArgError&) {
        return std::nullopt;
    }
    return entry;
}

class Checker {
public:
    Checker(std::string id, bool isJson) : m_id(std::move(id)), m_isJson(isJson) {}

    void check(const Entry& entry) {
        const Status status = compare(entry);
        m_status = std::max<int>(m_status, status);
        m_different += status == Done ? 0 : 1;
        m_records.push_back(Record().add("name", entry.name).add("verified", status == Done));
        bool isChanged = false;
        const std::string shown = escapeName(entry.name, isChanged);
        const char* const result = status == Done ? "OK" : status == Failed ? "FAILED open or read" : "FAILED";
        if (!m_isJson)
            print((isChanged ? "\\" : "") + shown + ": " + result + "\n");
    }

    int finish(const std::string& list, int malformed) {
        if (m_isJson)
            print(toJson(m_records));
        if (m_records.empty())
            throw Problem(NotVerified, list + " has no line of a digest of " + m_id);
        if (malformed > 0)
            warn("sarn digest",
                 list + " has " + std::to_string(malformed) + " lines that are not of a digest of " + m_id);
        if (m_different > 0)
            warn("sarn digest", std::to_string(m_different) + " of " + std::to_string(m_records.size()) +
                                    " files are not as " + list + " says");
        return std::max<int>(m_status, malformed > 0 ? NotVerified : Done);
    }

private:
    Status compare(const Entry& entry) {
        try {
            Input input(entry.name);
            const ul::P<sarn::IDigest> digest = sarn::createDigest(m_id);
            readPieces(input, 1 << 17, [&](ul::CBytes piece) { sarn::feed(*digest, piece); });
            return ul::CBytes(sarn::finish(*digest)) == entry.digest ? Done : NotVerified;
        } catch (const ul::CFileError& error) {
            warn("sarn digest", error.what());
            return Failed;
        }
    }

    std::string m_id;
    bool m_isJson;
    int m_status = Done;
    int m_different = 0;
    std::vector<Record> m_records;
};

} // namespace

std::string formatDigest(const std::string& digest, const std::string& name) {
    bool isChanged = false;
    const std::string escaped = escapeName(name, isChanged);
    return (isChanged ? "\\" : "") + digest + "  " + escaped + "\n";
}

int checkList(const std::string& id, const std::string& list, bool isJson) {
    Input input(list);
    const auto content = readAll(input, fileLimit);
    std::string_view rest = ul::CBytes(content).asText();
    const auto digestSize = static_cast<std::size_t>(sarn::createDigest(id)->getDigestSize());
    Checker checker(id, isJson);
    int malformed = 0;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const std::optional<Entry> entry = parseEntry(rest.substr(0, end), digestSize);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (entry)
            checker.check(*entry);
        else
            ++malformed;
    }
    return checker.finish(input.getName(), malformed);
}

} // namespace tool
