// SPDX-License-Identifier: Apache-2.0
#include "resumed_digest.h"

#include "host_files.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>

namespace demo {

namespace fs = std::filesystem;

namespace {

constexpr int chunkSize = 65536;

/// Feeds up to `size` bytes of a stream to a digest.
void feed(sarn::IDigest& digest, ul::CWindowsFileInStream& stream, std::int64_t size) {
    ul::TBuffer<unsigned char> chunk(chunkSize, -1);
    while (size > 0 && !stream.isEndOfStream()) {
        const int count = stream.readLax(chunk.getData(), static_cast<int>(std::min<std::int64_t>(size, chunkSize)));
        digest.update(chunk.getData(), count);
        size -= count;
    }
}

ul::P<sarn::IDigest> createDigest() {
    return sarn::CDigestManager::get()->getType(digestID)->createDigest();
}

/// Runs a command and returns the first word that it prints, or an empty text.
std::string runCommand(const std::string& command, const fs::path& output) {
    std::string line = command + " > \"" + output.string() + "\"";
#ifdef _WIN32
    line = "\"" + line + "\""; // the shell takes the outer quotes away
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

std::string toHex(const sarn::IDigest& digest) {
    constexpr char digits[] = "0123456789abcdef";
    const unsigned char* const data = digest.getDigestData();
    std::string text;
    for (int i = 0; i < digest.getDigestSize(); ++i) {
        text += digits[data[i] >> 4];
        text += digits[data[i] & 15];
    }
    return text;
}

std::string getSHA1(const std::string& digest) {
    return digest.substr(32, 40);
}

void digestBeginning(const fs::path& file, std::int64_t size, const fs::path& stateFile) {
    const ul::P<sarn::IDigest> digest = createDigest();
    ul::CWindowsFileInStream stream(toPath(file));
    feed(*digest, stream, size);

    ul::TBuffer<unsigned char> state;
    ul::CBufferStream buffer(&state, 2.0);
    ul::CDataOutStream out(buffer);
    out.writeInt32(static_cast<int>(size));
    digest->storeState(out);
    std::ofstream(stateFile, std::ios::binary).write(reinterpret_cast<const char*>(state.getData()), state.getUsed());
}

std::string resumeDigest(const fs::path& file, const fs::path& stateFile) {
    ul::CWindowsFileInStream stateStream(toPath(stateFile));
    ul::CDataInStream in(stateStream);
    const int done = in.readInt32();
    const ul::P<sarn::IDigest> digest = createDigest();
    digest->loadState(in);

    ul::CWindowsFileInStream stream(toPath(file));
    ul::TBuffer<unsigned char> skipped(std::max(done, 0), -1);
    stream.read(skipped.getData(), skipped.getUsed());
    feed(*digest, stream, stream.getLength() - done);
    digest->finish();
    return toHex(*digest);
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
