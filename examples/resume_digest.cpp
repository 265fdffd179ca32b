// SPDX-License-Identifier: Apache-2.0
// Digests a file that grows, such as a log: each run reads only the bytes that were added since the previous one.
#include <sarn/host.h>

#include <fstream>
#include <iostream>

int main(int count, char** words) try {
    if (count != 3)
        throw std::runtime_error("usage: resume_digest FILE STATE_FILE");
    const ul::CWindowsPath saved = ul::path(words[2]);
    const ul::P<sarn::IDigest> digest = sarn::createDigest("sha256");
    std::streamoff done = 0;
    if (std::filesystem::exists(ul::native(saved))) {
        std::string state;
        std::ifstream(ul::native(saved)) >> done >> state;
        sarn::loadState(*digest, ul::fromHex(state));
    }
    std::ifstream file(ul::native(ul::path(words[1])), std::ios::binary | std::ios::ate);
    if (!file || file.tellg() < done)
        throw std::runtime_error("The file cannot be read, or is shorter than before.");
    file.seekg(done);
    for (char piece[1 << 16]; file.read(piece, sizeof piece) || file.gcount() > 0; done += file.gcount())
        sarn::feed(*digest, {piece, file.gcount()});
    if (file.bad())
        throw std::runtime_error("The file cannot be read to its end.");
    ul::writeUTF8TextFile(saved, ul::text(std::to_string(done) + " " + ul::toHex(sarn::saveState(*digest)) + "\n"));
    std::cout << ul::toHex(sarn::finish(*digest)) << "  " << done << " bytes\n";
} catch (const std::exception& error) {
    std::cerr << ul::formatError(error) << "\n";
    return 1;
}
