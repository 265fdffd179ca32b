// SPDX-License-Identifier: Apache-2.0
#include "command.h"
#include "input.h"
#include "report.h"
#include "signing.h"
#include "status.h"
#include "system.h"

#include <sarn/host.h>

#include <memory>
#include <set>

namespace tool {

namespace {

constexpr char checkDetails[] =
    R"(Verifies the configuration with FILE.sig, and reads it. The exit status is 1 if the signature is not one of the
file.)";
constexpr char checkExample[] = R"($ sarn config check --key public.pem backup.ini
backup.ini: OK, 2 values)";
constexpr char listDetails[] = "Prints the keys and values of a configuration, if its signature is right.";
constexpr char listExample[] = R"($ sarn config list --key public.pem backup.ini
/sources/path=/home/ada
/sources/cipher=aes256cbc)";
constexpr char getDetails[] = "Prints the value of a key, if the signature of the configuration is right.";
constexpr char getExample[] = R"($ sarn config get --key public.pem backup.ini /sources/cipher
aes256cbc)";
constexpr char signDetails[] = "Checks that a file is a configuration, and signs it as \"sarn sign\" does.";
constexpr char signExample[] = R"($ printf '[sources]\npath=/home/ada\n' > new.ini
$ sarn config sign --key private.pem new.ini
$ sarn config get --key public.pem new.ini sources/path
/home/ada)";

struct ReadOptions {
    std::string file;
    std::string key;
    std::string name;
    bool isBase64 = false;
    bool isJson = false;
};

struct SignOptions {
    SigningOptions signing;
    bool isBase64 = false;
};

[[noreturn]] void refuse(const std::string& name, const ul::CError& error) {
    throw Problem(Failed, describeInput(name) + " is not a configuration (" + error.what() + ")");
}

/// The library's errors for a key and a signature do not name their files, so these are tried first.
sarn::CSignedConfig open(const ReadOptions& options) {
    const ul::CSecretText key = readPem(options.key);
    beginVerify(options.key, key);
    readSignature(options.file + ".sig");
    try {
        return {ul::path(getPath(options.file)), key, options.isBase64};
    } catch (const ul::CFileError&) {
        throw;
    } catch (const sarn::CSignedConfigSignatureError& error) {
        throw Problem(NotVerified, options.file + ": " + error.what());
    } catch (const ul::CError& error) {
        refuse(options.file, error);
    }
}

int check(const ReadOptions& options) {
    const int count = sarn::getKeys(open(options)).getSize();
    const Record record = Record().add("name", options.file).add("verified", true).add("values", std::int64_t{count});
    print(options.isJson ? record.toJson() + "\n"
                         : toShownText(options.file) + ": OK, " + std::to_string(count) + " values\n");
    return Done;
}

int list(const ReadOptions& options) {
    const sarn::CSignedConfig config = open(options);
    Record values;
    std::string lines;
    std::set<std::string> names;
    for (const ul::String& key : sarn::getKeys(config, options.name.empty() ? "/" : options.name)) {
        const std::string name = key.toUTF8();
        const auto found = sarn::findValue(config, key);
        if (!found || !names.insert(name).second)
            throw Problem(Failed, options.file + ": the key " + name +
                                      " does not lead to each of its values: the name of a section contains a slash");
        const std::string value = found->toUTF8();
        values.add(name, value);
        lines += toShownText(name) + "=" + toShownText(value) + "\n";
    }
    print(options.isJson ? values.toJson() + "\n" : lines);
    return Done;
}

int get(const ReadOptions& options) {
    const sarn::CSignedConfig config = open(options);
    const auto found = sarn::findValue(config, options.name);
    if (!found)
        throw Problem(Failed, options.file + " has no value for " + options.name);
    const std::string value = found->toUTF8();
    print(options.isJson ? Record().add(options.name, value).toJson() + "\n" : value + "\n");
    return Done;
}

int sign(const SignOptions& options) {
    Input input(options.signing.file);
    const Bytes content = readAll(input, fileLimit);
    try {
        ul::TBuffer<unsigned char> text;
        if (options.isBase64)
            text = sarn::fromBase64(ul::CBytes(content).asText());
        else
            text.init(content.getData(), content.getUsed());
        ul::CINIContent::parseData(text);
    } catch (const ul::CError& error) {
        refuse(options.signing.file, error);
    }
    tool::sign(options.signing, &content);
    return Done;
}

/// Adds a command that reads a configuration.
CLI::App& addReader(CommandLine& line, CLI::App& parent, const char* name, const char* summary, const char* details,
                    const char* example, int (*run)(const ReadOptions&), ReadOptions** added) {
    const auto options = std::make_shared<ReadOptions>();
    CLI::App& command = addCommand(line, parent, name, summary, details, example, [=] { return run(*options); });
    addText(command, "FILE", "", options->file, "the configuration").required();
    addText(command, "--key", "FILE", options->key, "public key in PEM form").required();
    command.add_flag("--base64", options->isBase64, "the file is Base64 text");
    addJson(command, options->isJson);
    *added = options.get();
    return command;
}

} // namespace

void addConfig(CommandLine& line) {
    CLI::App& group = *line.app.add_subcommand("config", "Reads and signs signed configurations");
    group.group("Commands");
    group.require_subcommand(1);
    ReadOptions* options = nullptr;
    addReader(line, group, "check", "Verifies a configuration", checkDetails, checkExample, check, &options);
    CLI::App& listing = addReader(line, group, "list", "Prints all values", listDetails, listExample, list, &options);
    addText(listing, "PREFIX", "", options->name, "start of the keys (default: /)");
    CLI::App& getting = addReader(line, group, "get", "Prints a value", getDetails, getExample, get, &options);
    addText(getting, "KEY", "", options->name, "key, such as /section/name").required();
    const auto signing = std::make_shared<SignOptions>();
    CLI::App& command = addCommand(line, group, "sign", "Signs a configuration", signDetails, signExample,
                                   [signing] { return sign(*signing); });
    addSigning(command, signing->signing);
    command.add_flag("--base64", signing->isBase64, "the file is Base64 text");
}

} // namespace tool
