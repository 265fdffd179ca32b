// SPDX-License-Identifier: Apache-2.0
#include "support/temp_folder.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace sarn_test {

namespace fs = std::filesystem;

namespace {

/// The folder that the environment names, or the system's folder for temporary files.
fs::path getParent() {
    const char* const named = std::getenv("SARN_TEST_TEMP");
    return named ? fs::path(named) : fs::temp_directory_path();
}

} // namespace

TempFolder::TempFolder() {
    std::random_device random;
    m_folder = getParent() / ("sarn-test-" + std::to_string(random()) + std::to_string(random()));
    if (!fs::create_directory(m_folder))
        throw std::runtime_error("cannot create " + m_folder.string());
}

TempFolder::~TempFolder() {
    std::error_code ignored;
#ifdef _WIN32
    // Only the verbatim form can remove a file with the name of a device.
    fs::remove_all(L"\\\\?\\" + fs::absolute(m_folder).native(), ignored);
#else
    fs::remove_all(m_folder, ignored);
#endif
}

std::vector<std::string> TempFolder::list() const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_folder))
        names.push_back(entry.path().filename().u8string());
    std::sort(names.begin(), names.end());
    return names;
}

ul::CWindowsPath TempFolder::write(const std::string& name, const std::string& content) const {
    std::ofstream file(getNative(name), std::ios::binary);
    file << content;
    file.close();
    if (!file)
        throw std::runtime_error("cannot write " + name);
    return getPath(name);
}

std::string TempFolder::read(const std::string& name) const {
    std::ifstream file(getNative(name), std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + name);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void TempFolder::clear() const {
    for (const std::string& name : list())
        fs::remove(getNative(name));
}

ul::CWindowsPath TempFolder::toPath(const fs::path& native) {
    const std::string text = native.u8string();
    return ul::CWindowsPath(ul::String::fromUTF8(text.data(), text.size()));
}

} // namespace sarn_test
