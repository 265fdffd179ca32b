// SPDX-License-Identifier: Apache-2.0
#include "command.h"
#include "digest_list.h"
#include "input.h"
#include "report.h"
#include "secrets.h"
#include "status.h"

#include <sarn/host.h>

#include <memory>

namespace tool {

namespace {

constexpr char details[] =
    "Prints the HMAC of each file in the form of sha1sum. A file is read into memory: 2^31 - 65537 bytes at most.";
constexpr char example[] = R"($ printf Jefe > short.key
$ printf 'what do ya want for nothing?' | sarn hmac sha1 --key short.key
effcdf6ae5eb2fa2d27416d5f184df9c259a7c79  -)";

struct Options {
    std::string id;
    std::string key;
    std::vector<std::string> names;
    bool isJson = false;
};

int run(const Options& options) {
    Input keyInput(options.key);
    const Bytes key = readAll(keyInput, 1 << 20);
    std::vector<Record> records;
    for (const std::string& name : options.names) {
        Input input(name);
        const Bytes message = readAll(input, fileLimit);
        Bytes hmac;
        const auto calculate = options.id == "md5" ? sarn::calcHMAC_MD5 : sarn::calcHMAC_SHA1;
        calculate(hmac, message.getData(), message.getUsed(), key.getData(), key.getUsed());
        records.push_back(Record().add("name", name).add("hmac", ul::toHex(hmac)));
        if (!options.isJson)
            print(formatDigest(ul::toHex(hmac), name));
    }
    if (options.isJson)
        print(toJson(records));
    return Done;
}

} // namespace

void addHmac(CommandLine& line) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = addCommand(line, line.app, "hmac", "Computes HMACs of files", details, example,
                                   [options] { return run(*options); });
    limitTo(*addText(command, "ID", "", options->id, "the hash").required(), {"md5", "sha1"});
    addFiles(command, options->names);
    addText(command, "--key", "FILE", options->key, "file that contains the key, and nothing else").required();
    addJson(command, options->isJson);
}

} // namespace tool
