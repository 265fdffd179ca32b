// SPDX-License-Identifier: Apache-2.0
#include "secrets.h"

#include "identifiers.h"
#include "input.h"
#include "status.h"
#include "system.h"

#include <sarn/host.h>

namespace tool {

namespace {

constexpr int sizeLimit = 1 << 20;
constexpr char byteOrderMark[] = "\xEF\xBB\xBF";

std::string_view dropByteOrderMark(std::string_view text) {
    return text.substr(text.substr(0, 3) == byteOrderMark ? 3 : 0);
}

ul::TCryptBuffer<char> copy(std::string_view text) {
    ul::TCryptBuffer<char> bytes;
    bytes.init(text.data(), static_cast<int>(text.size()));
    return bytes;
}

ul::TCryptBuffer<char> readFirstLine(Input& input) {
    const Bytes content = readAll(input, sizeLimit);
    const std::string_view text = dropByteOrderMark(ul::CBytes(content).asText());
    return copy(text.substr(0, text.find_first_of("\r\n")));
}

ul::TCryptBuffer<char> askForSecret(const std::string& name, bool isNew) {
    ul::TCryptBuffer<char> secret = readHiddenLine("The " + name + ": ");
    if (isNew && ul::CBytes(readHiddenLine("The " + name + " again: ")) != secret)
        throw Problem(Misuse, "the two are different");
    return secret;
}

} // namespace

void addSecret(CLI::App& command, const std::string& name, SecretSource& source) {
    CLI::Option& file = addText(command, "--" + name + "-file", "FILE", source.file,
                                "file whose first line is the " + name + " (default: ask)");
    addNumber(command, "--" + name + "-fd", source.descriptor, 0, "descriptor to read the " + name + " from")
        .excludes(&file);
}

ul::TCryptBuffer<char> readSecret(const SecretSource& source, const std::string& name, bool isNew) {
    if (!source.isGiven())
        return askForSecret(name, isNew);
    if (source.descriptor != -1) {
        Input input(source.descriptor);
        return readFirstLine(input);
    }
    Input input(source.file);
    return readFirstLine(input);
}

void addKeyOptions(CLI::App& command, KeySource& source, bool hasFile) {
    limitTo(addText(command, "--cipher", "ID", source.cipher, "the cipher, by default the first"), getCipherIds());
    CLI::Option& salt = addText(command, "--salt", "HEX", source.salt, "the salt of the password's key");
    addNumber(command, "--iterations", source.iterations, 1, "iterations of PBKDF2 (default: 100000)");
    addSecret(command, "password", source.password);
    if (hasFile)
        addText(command, "--key", "FILE", source.file, "file that contains the key, and nothing else").excludes(&salt);
}

Bytes deriveKey(const KeySource& source, ul::CBytes salt, int size, bool isNew) {
    return sarn::deriveKey(readSecret(source.password, "password", isNew), salt, source.iterations, size);
}

Bytes getKey(const KeySource& source, int size, bool isNew) {
    if (size == 0)
        return {};
    if (source.file.empty()) {
        if (source.salt.empty())
            throw Problem(Misuse, "there is no key: give --key, or the --salt that \"sarn key\" printed");
        return deriveKey(source, parseHex("--salt", source.salt), size, isNew);
    }
    if (source.password.isGiven())
        throw Problem(Misuse, "give --key or a password, not both");
    Input input(source.file);
    Bytes key = readAll(input, sizeLimit);
    if (key.getUsed() != size)
        throw Problem(Misuse, input.getName() + " has " + std::to_string(key.getUsed()) + " bytes, but a key for " +
                                  source.cipher + " has " + std::to_string(size));
    return key;
}

ul::CSecretText readPem(const std::string& name) {
    Input input(name);
    const Bytes content = readAll(input, sizeLimit);
    try {
        return ul::CSecretText(dropByteOrderMark(ul::CBytes(content).asText()));
    } catch (const ul::CError&) {
        throw Problem(Failed, input.getName() + " is not a PEM file");
    }
}

Bytes parseHex(const std::string& option, const std::string& digits) {
    try {
        return ul::fromHex(digits);
    } catch (const ul::CInvalidArgError&) {
        throw Problem(Misuse, option + " needs an even number of hexadecimal digits");
    }
}

} // namespace tool
