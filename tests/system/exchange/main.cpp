// SPDX-License-Identifier: Apache-2.0
// Writes data of every family, or reads the data of another build.
#include "system/exchange/bundle.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

namespace sarn_test {

void require(bool condition, const std::string& item) {
    if (!condition)
        throw std::runtime_error(item + " is wrong");
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

/// Checks each item of this build by `isRight(name, own bytes, bytes of the other build)`. Returns their number.
template <class Check>
std::size_t checkItems(const Items& own, const Items& others, Check isRight) {
    std::size_t count = 0;
    for (const auto& [name, bytes] : own) {
        const auto found = others.find(name);
        // The other build may lack IDEA.
        if (found == others.end() && name.rfind("cipher/ideacbc/", 0) == 0)
            continue;
        require(found != others.end(), "missing item " + name);
        require(isRight(name, bytes, found->second), name);
        ++count;
    }
    return count;
}

/// Returns the number of items that were checked.
std::size_t read(const std::string& folder) {
    const Bundle own = makeBundle();
    const Bundle others = {readItems(folder + "/exact.txt"), readItems(folder + "/random.txt")};
    return checkItems(own.exact, others.exact,
                      [](auto&, const Bytes& left, const Bytes& right) { return left == right; }) +
           checkItems(
               own.random, others.random,
               [](const std::string& name, auto&, const Bytes& encrypted) { return decrypts(name, encrypted); }) +
           static_cast<std::size_t>(checkSignedFiles(folder));
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
