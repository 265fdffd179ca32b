// SPDX-License-Identifier: Apache-2.0
#include "command.h"
#include "digest_list.h"
#include "identifiers.h"
#include "input.h"
#include "output.h"
#include "saved_state.h"
#include "status.h"

#include <memory>

namespace tool {

namespace {

constexpr char details[] =
    R"(Prints the digest of each file as sha256sum does. --check reads such a list and compares. For a file that
grows, such as a log, --save keeps the running digest, and --resume continues from it: the bytes that were digested
before are skipped, and nothing finds out whether they have changed.)";
constexpr char example[] = R"($ sarn digest sha256 letter.txt > SHA256SUMS
$ sarn digest sha256 --check SHA256SUMS
letter.txt: OK
$ sarn digest sha1 --save log.state log.txt
7c4a8d09ca3762af61e59520943dc26494f8941b  log.txt
$ echo more >> log.txt
$ sarn digest sha1 --resume log.state log.txt
3fc2a7cc12f49cb0aa2d4cc33bd6bcc168dc21e0  log.txt)";

struct Options {
    std::string id;
    std::vector<std::string> names;
    std::string list;
    std::string savedTo;
    std::string resumedFrom;
    bool mayReplace = false;
    bool isJson = false;
};

std::string digestOne(const Options& options, const std::string& name) {
    const ul::P<sarn::IDigest> digest = sarn::createDigest(options.id);
    Input input(name);
    std::int64_t size = 0;
    if (!options.resumedFrom.empty()) {
        const SavedState state = readState(options.resumedFrom, options.id);
        if (!state.size)
            throw Problem(Misuse,
                          describeInput(options.resumedFrom) + " does not say how many bytes its checksum covers");
        sarn::loadState(*digest, state.bytes);
        size = *state.size;
        input.skip(size);
    }
    // Before the work, so that a name that is taken is reported at once.
    std::optional<Output> saved;
    if (!options.savedTo.empty())
        saved.emplace(options.savedTo, options.mayReplace);
    readPieces(input, 1 << 17, [&](ul::CBytes piece) {
        sarn::feed(*digest, piece);
        size += static_cast<std::int64_t>(piece.size());
    });
    if (saved) {
        saved->write(formatState(options.id, size, sarn::saveState(*digest)));
        saved->commit();
    }
    return ul::toHex(sarn::finish(*digest));
}

/// The digest of a file; nothing if it is one of several files and cannot be read, which is reported.
std::optional<std::string> tryToDigest(const Options& options, const std::string& name) {
    try {
        return digestOne(options, name);
    } catch (const ul::CFileError& error) {
        if (options.names.size() == 1)
            throw;
        warn("sarn digest", error.what());
        return std::nullopt;
    }
}

int digestAll(const Options& options) {
    int status = Done;
    std::vector<Record> records;
    for (const std::string& name : options.names) {
        const std::optional<std::string> digest = tryToDigest(options, name);
        if (!digest) {
            status = Failed;
            continue;
        }
        records.push_back(Record().add("name", name).add("digest", *digest));
        if (!options.isJson)
            print(formatDigest(*digest, name));
    }
    if (options.isJson)
        print(toJson(records));
    return status;
}

int runDigest(const Options& options) {
    if (!options.list.empty())
        return checkList(options.id, options.list, options.isJson);
    if (options.names.size() > 1 && !(options.savedTo.empty() && options.resumedFrom.empty()))
        throw Problem(Misuse, "--save and --resume are for one file");
    return digestAll(options);
}

} // namespace

void addDigest(CommandLine& line) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = addCommand(line, line.app, "digest", "Computes and checks digests of files", details, example,
                                   [options] { return runDigest(*options); });
    limitTo(*addText(command, "ID", "", options->id, "the digest").required(), getDigestIds());
    CLI::Option& files = addFiles(command, options->names);
    CLI::Option& list =
        addText(command, "--check", "LIST", options->list, "compare the files of a list with their digests");
    addText(command, "--save", "STATE", options->savedTo, "save the running digest").excludes(&list);
    addText(command, "--resume", "STATE", options->resumedFrom, "continue a saved digest").excludes(&list);
    files.excludes(&list);
    addForce(command, options->mayReplace);
    addJson(command, options->isJson);
}

} // namespace tool
