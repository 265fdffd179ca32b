// SPDX-License-Identifier: Apache-2.0
// Keys, passwords and passphrases. They are never arguments, which the other users of the machine can see.
#pragma once

#include "command.h"

#include <ul/host.h>

#include <memory>
#include <string>

namespace tool {

using Bytes = ul::TCryptBuffer<unsigned char>;

/// Where a password or passphrase is: in a file, at a descriptor, or, if neither is given, typed by a user.
struct SecretSource {
    std::string file;
    int descriptor = -1;

    bool isGiven() const { return !file.empty() || descriptor != -1; }
};

/// Adds the options --NAME-file and --NAME-fd.
void addSecret(CLI::App& command, const std::string& name, SecretSource& source);

/// Reads a secret: the first line without its end. A user types it, twice if `isNew`.
/// \throws Problem
ul::TCryptBuffer<char> readSecret(const SecretSource& source, const std::string& name, bool isNew);

/// A key: the bytes of a file, or derived from a password.
struct KeySource {
    std::string cipher = "aes256cbc";
    std::string file;
    SecretSource password;
    std::string salt;
    int iterations = 100000;
};

/// Adds the options of a key. The option of its file is added only if `hasFile`.
void addKeyOptions(CLI::App& command, KeySource& source, bool hasFile);

/// Derives `size` bytes from the password.
/// \param isNew whether nothing is under this key yet: a typed password is asked for twice
Bytes deriveKey(const KeySource& source, ul::CBytes salt, int size, bool isNew);

/// The key for a cipher.
/// \throws Problem if the file does not have its size, or neither a file nor a salt is given.
Bytes getKey(const KeySource& source, int size, bool isNew);

/// Reads text such as a PEM key, which is wiped.
/// \throws Problem if it is not UTF-8.
ul::CSecretText readPem(const std::string& name);

/// Decodes the hexadecimal digits in the value of an option.
/// \throws Problem
Bytes parseHex(const std::string& option, const std::string& digits);

} // namespace tool
