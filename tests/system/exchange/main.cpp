// SPDX-License-Identifier: Apache-2.0
// Writes a bundle of data of every family, or reads one that another build wrote.
#include "system/exchange/bundle.h"

#include "ul/error.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <numeric>
#include <stdexcept>

namespace sarn_test {

void require(bool condition, const std::string& item) {
    if (!condition)
        throw std::runtime_error(item + " is not what it should be");
}

const Bytes& getItem(const Items& items, const std::string& name) {
    const auto found = items.find(name);
    require(found != items.end(), "missing item " + name);
    return found->second;
}

namespace {

void writeItems(const std::string& path, const Items& items) {
    std::ofstream file(path, std::ios::binary);
    for (const auto& [name, bytes] : items)
        file << name << " = " << toHex(bytes) << '\n';
    if (!file.flush())
        throw std::runtime_error("cannot write " + path);
}

Items readItems(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    Items items;
    for (std::string line; std::getline(file, line);) {
        const std::size_t separator = line.find(" = ");
        require(separator != std::string::npos, path);
        items[line.substr(0, separator)] = fromHex(line.substr(separator + 3));
    }
    require(!items.empty(), path);
    return items;
}

Bundle makeBundle() {
    Bundle bundle;
    addCiphers(bundle);
    addDigestStates(bundle);
    addKeysAndEncodings(bundle);
    return bundle;
}

void write(const std::string& folder) {
    std::filesystem::create_directories(folder);
    const Bundle bundle = makeBundle();
    writeItems(folder + "/exact.txt", bundle.exact);
    writeItems(folder + "/random.txt", bundle.random);
    writeSignedFiles(folder);
}

int read(const std::string& folder) {
    const Bundle bundle = {readItems(folder + "/exact.txt"), readItems(folder + "/random.txt")};
    for (const auto& [name, bytes] : makeBundle().exact) {
        const auto found = bundle.exact.find(name);
        require(found == bundle.exact.end() || found->second == bytes, name);
    }
    const int counts[] = {checkCiphers(bundle), checkDigestStates(bundle), checkKeysAndEncodings(bundle),
                          checkSignedFiles(folder)};
    for (const int count : counts)
        require(count > 0, "a family without items");
    return std::accumulate(std::begin(counts), std::end(counts), 0);
}

} // namespace

} // namespace sarn_test

int main(int count, char** words) {
    const std::string action = count == 3 ? words[1] : "";
    try {
        if (action == "write") {
            sarn_test::write(words[2]);
            return 0;
        }
        if (action == "read") {
            std::cout << sarn_test::read(words[2]) << " items\n";
            return 0;
        }
        std::cerr << "usage: sarn_exchange write|read FOLDER\n";
        return 2;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
