// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/vectors.h"

#include "ul/string.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace sarn_test {

constexpr char testPassphrase[] = "for tests only";

/// The PEM text of a key file, for example "rsa2048". The keys are published here, so nothing else may trust them. They
/// were made by openssl; the passphrase of "rsa1024_encrypted_latin1" is the two bytes FC and DF.
inline ul::String readKey(const std::string& name, const std::string& suffix = "_for_tests_only.pem") {
    const std::string path = getTestDataFolder() + "/keys/" + name + suffix;
    std::ifstream file(path);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (text.empty())
        throw std::runtime_error("cannot read " + path);
    return ul::String(text.data(), text.size());
}

/// The PEM text of a key in the file hostile_keys.txt, for example "dsa_q2".
inline ul::String readHostileKey(const std::string& name) {
    const std::string text = readKey("../hostile_keys", ".txt").toUTF8();
    const std::string::size_type start = text.find("-----BEGIN", text.find("\n\n" + name + ": "));
    const std::string::size_type end = text.find('\n', text.find("-----END", start));
    const std::string key = text.substr(start, end + 1 - start);
    return ul::String(key.data(), key.size());
}

inline ul::String readPublicKey(const std::string& name) {
    return readKey(name, "_for_tests_only.pub.pem");
}

} // namespace sarn_test
