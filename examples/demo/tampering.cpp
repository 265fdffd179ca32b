// SPDX-License-Identifier: Apache-2.0
#include "tampering.h"

#include <ul/error.h>

#include <fstream>

namespace demo {

namespace {

void flipMiddle(const std::filesystem::path& file) {
    std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
    const auto middle = static_cast<std::streamoff>(std::filesystem::file_size(file) / 2);
    stream.seekg(middle);
    const int byte = stream.get();
    stream.seekp(middle);
    stream.put(static_cast<char>(byte ^ 1));
}

} // namespace

std::string changeOneByte(const std::filesystem::path& file, const std::function<void()>& use) {
    std::string noticed;
    flipMiddle(file);
    try {
        use();
    } catch (const ul::CError& error) {
        noticed = error.what();
    }
    flipMiddle(file);
    return noticed;
}

} // namespace demo
