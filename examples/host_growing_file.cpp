// SPDX-License-Identifier: Apache-2.0
// Digests a file that grows, a log for example: each run reads what is new since the last.
#include <sarn/host.h>

#include <fstream>
#include <iostream>
#include <sstream>
#include <vector>

int main(int count, char** words) try {
    if (count != 3)
        throw std::runtime_error("usage: host_growing_file FILE STATE_FILE");
    const std::filesystem::path name = ul::native(ul::path(words[1]));
    const ul::CWindowsPath statePath = ul::path(words[2]);
    const ul::P<sarn::IDigest> digest = sarn::createDigest("sha256");
    std::uintmax_t done = 0;
    if (std::filesystem::exists(ul::native(statePath))) {
        std::istringstream saved(ul::readUTF8TextFile(statePath).toUTF8());
        std::string state;
        saved >> done >> state;
        sarn::loadState(*digest, ul::fromHex(state));
    }
    if (done > std::filesystem::file_size(name))
        throw std::runtime_error("The file is shorter than before: remove the state to begin anew.");

    std::ifstream file(name, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(done));
    std::vector<char> piece(1 << 16);
    while (file.read(piece.data(), static_cast<std::streamsize>(piece.size())) || file.gcount() > 0) {
        sarn::feed(*digest, {piece.data(), file.gcount()});
        done += static_cast<std::uintmax_t>(file.gcount());
    }
    if (!file.eof() || file.bad())
        throw std::runtime_error("The file cannot be read.");
    ul::writeUTF8TextFile(statePath, ul::text(std::to_string(done) + " " + ul::toHex(sarn::saveState(*digest)) + "\n"));
    std::cout << ul::toHex(sarn::finish(*digest)) << "  " << done << " bytes\n";
} catch (const std::exception& error) {
    std::cerr << ul::formatError(error) << "\n";
    return 1;
}
