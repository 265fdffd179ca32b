// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/vectors.h"

#include "ul/string.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace sarn_test {

constexpr char testPassphrase[] = "for tests only";

/// The PEM text of a key file, for example "rsa2048".
inline ul::String readKey(const std::string& name, const std::string& suffix = "_for_tests_only.pem") {
    const std::string path = getTestDataFolder() + "/keys/" + name + suffix;
    std::ifstream file(path);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (text.empty())
        throw std::runtime_error("cannot read " + path);
    return ul::String(text.data(), text.size());
}

inline ul::String readPublicKey(const std::string& name) {
    return readKey(name, "_for_tests_only.pub.pem");
}

} // namespace sarn_test
