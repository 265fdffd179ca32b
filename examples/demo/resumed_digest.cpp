// SPDX-License-Identifier: Apache-2.0
#include "resumed_digest.h"

#include <sarn/host.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>

namespace demo {

namespace fs = std::filesystem;

namespace {

/// Calls `use` for the next `size` bytes of a stream, piece by piece; for fewer if the stream ends.
template <class Use>
void read(ul::CWindowsFileInStream& stream, std::int64_t size, Use use) {
    ul::TBuffer<unsigned char> piece(1 << 16, -1);
    while (size > 0 && !stream.isEndOfStream()) {
        const auto wanted = static_cast<int>(std::min<std::int64_t>(size, piece.getUsed()));
        const int count = stream.readLax(piece.getData(), wanted);
        use(ul::CBytes(piece.getData(), count));
        size -= count;
    }
}

/// Runs a command and returns the first word that it prints, or an empty text.
std::string runCommand(const std::string& command, const fs::path& output) {
    std::string line = command + " > \"" + output.string() + "\"";
#ifdef _WIN32
    line = "\"" + line + "\""; // the shell removes the outer quotes
#endif
    if (std::system(line.c_str()) != 0)
        return "";
    std::string word;
    std::ifstream(output) >> word;
    return word;
}

std::string quote(const fs::path& path) {
    return "\"" + path.string() + "\"";
}

} // namespace

std::string getSHA1(const std::string& digest) {
    return digest.substr(32, 40);
}

void digestBeginning(const fs::path& file, std::int64_t size, const fs::path& stateFile) {
    const ul::P<sarn::IDigest> digest = sarn::createDigest(digestID);
    ul::CWindowsFileInStream stream(ul::path(file));
    read(stream, size, [&](ul::CBytes piece) { sarn::feed(*digest, piece); });
    const std::string state = std::to_string(size) + " " + ul::toHex(sarn::saveState(*digest)) + "\n";
    ul::writeUTF8TextFile(ul::path(stateFile), ul::text(state));
}

std::string resumeDigest(const fs::path& file, const fs::path& stateFile) {
    std::int64_t done = 0;
    std::string state;
    std::ifstream(stateFile) >> done >> state;
    const ul::P<sarn::IDigest> digest = sarn::createDigest(digestID);
    sarn::loadState(*digest, ul::fromHex(state));

    ul::CWindowsFileInStream stream(ul::path(file));
    read(stream, done, [](ul::CBytes) {});
    sarn::feedFile(*digest, stream, [](std::int64_t, std::int64_t) {});
    return ul::toHex(sarn::finish(*digest));
}

std::string digestInTwoRuns(const std::string& program, const fs::path& file, const fs::path& folder) {
    const fs::path state = folder / "digest.state";
    const fs::path output = folder / "digest.output";
    const std::string command = "\"" + program + "\" digest " + quote(file) + " " + quote(state);
    const auto half = static_cast<std::int64_t>(fs::file_size(file) / 2);
    if (runCommand(command + " " + std::to_string(half), output).empty())
        return "";
    return runCommand(command, output);
}

std::string askSystemForSHA1(const fs::path& file, const fs::path& folder) {
    const fs::path output = folder / "sha1.output";
    const auto isDigest = [](const std::string& text) {
        return text.size() == 40 &&
               std::all_of(text.begin(), text.end(), [](unsigned char digit) { return std::isxdigit(digit) != 0; });
    };
    const std::string error = " 2> " + quote(folder / "sha1.error");
    for (const std::string& command :
         {"sha1sum < " + quote(file) + error, "openssl dgst -sha1 -r " + quote(file) + error}) {
        std::string word = runCommand(command, output);
        if (isDigest(word))
            return word;
    }
    return "";
}

} // namespace demo
