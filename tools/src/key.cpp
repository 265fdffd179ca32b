// SPDX-License-Identifier: Apache-2.0
#include "command.h"
#include "output.h"
#include "report.h"
#include "secrets.h"
#include "status.h"

#include <sarn/host.h>

#include <memory>

namespace tool {

namespace {

constexpr char details[] =
    R"(Derives a key from a password with PBKDF2 and HMAC-SHA1, or draws one with --random, and writes its bytes to a
file that only its owner may read. Prints the salt, which is random if none is given, and the iterations: both are
needed to derive the key again, and neither is secret. Nothing secret is printed without --show.)";
constexpr char example[] = R"($ sarn key --salt 8f1ac377 --password-file password.txt backup.key
salt        8f1ac377
iterations  100000
size        32
$ ls -l backup.key | cut -c 1-10
-rw-------)";

constexpr int saltSize = 16;

struct Options {
    KeySource key;
    int size = 0;
    bool isRandom = false;
    bool isShown = false;
    std::string to;
    bool mayReplace = false;
    bool isJson = false;
};

Bytes makeKey(const Options& options, int size, Record& record) {
    if (options.isRandom)
        return ul::makeRandomBytes(size);
    const Bytes salt = options.key.salt.empty() ? ul::makeRandomBytes(saltSize) : parseHex("--salt", options.key.salt);
    record.add("salt", ul::toHex(salt)).add("iterations", std::int64_t{options.key.iterations});
    return deriveKey(options.key, salt, size, true);
}

void printRecord(const Options& options, const Record& record) {
    // Standard output has the key alone if it goes there, and a random key needs no report.
    if (options.to == "-" || (options.isRandom && !options.isShown && !options.isJson))
        return;
    print(options.isJson ? record.toJson() + "\n" : record.toLines());
}

int run(const Options& options) {
    if (options.to.empty() && !options.isShown)
        throw Problem(Misuse, "give a file for the key, or --show to print it");
    const int size = options.size > 0
                         ? options.size
                         : sarn::CCipherManager::get()->getCipher(ul::text(options.key.cipher))->getKeySize();
    if (size == 0)
        throw Problem(Misuse, options.key.cipher + " has no key");
    std::optional<Output> output;
    if (!options.to.empty())
        output.emplace(options.to, options.mayReplace, Output::Readers::OwnerOnly);
    Record record;
    const Bytes key = makeKey(options, size, record);
    record.add("size", std::int64_t{size});
    if (options.isShown)
        record.add("key", ul::toHex(key));
    if (output) {
        output->write(key);
        output->commit();
    }
    printRecord(options, record);
    return Done;
}

} // namespace

void addKey(CommandLine& line) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = addCommand(line, line.app, "key", "Derives or draws a key", details, example,
                                   [options] { return run(*options); });
    addText(command, "TO", "", options->to, "file to write, or -");
    addKeyOptions(command, options->key, false);
    addNumber(command, "--size", options->size, 1, "size in bytes (default: the cipher's)");
    command.add_flag("--random", options->isRandom, "draw a key, without a password")
        ->excludes(command.get_option("--salt"))
        ->excludes(command.get_option("--password-file"))
        ->excludes(command.get_option("--password-fd"));
    command.add_flag("--show", options->isShown, "print the key in hexadecimal digits");
    addForce(command, options->mayReplace);
    addJson(command, options->isJson);
}

} // namespace tool
