// SPDX-License-Identifier: Apache-2.0
#include "command.h"
#include "input.h"
#include "output.h"
#include "secrets.h"
#include "status.h"

#include <sarn/host.h>

#include <memory>

namespace tool {

namespace {

constexpr char encryptDetails[] =
    R"(Writes one message as the library does: a random IV, then the ciphertext with PKCS #7 padding in CBC mode. With
--iv the message has no IV before it. A message contains neither salt nor iterations: keep both, or the key. It
does not reveal changes either: sign it, or keep its digest. A file may have any size.)";
constexpr char encryptExample[] = R"($ sarn key --random backup.key
$ sarn encrypt --key backup.key letter.txt letter.encrypted
$ hex() { od -An -v -tx1 | tr -d ' \n'; }; key=$(hex < backup.key) iv=$(head -c 16 letter.encrypted | hex); \
  tail -c +17 letter.encrypted | openssl enc -d -aes-256-cbc -K $key -iv $iv
Dear Ada,
this letter has no other copy.)";
constexpr char decryptDetails[] =
    R"(Reads one message as "sarn encrypt" writes it. A wrong key and a damaged message usually, not always, end in an
error; bytes that went to standard output before it are meaningless. A file may have any size.)";
constexpr char decryptExample[] =
    R"($ sarn encrypt --salt 8f1ac377 --password-file password.txt letter.txt letter.encrypted
$ sarn decrypt --salt 8f1ac377 --password-file password.txt letter.encrypted -
Dear Ada,
this letter has no other copy.)";

constexpr int pieceSize = 1 << 18;

struct Options {
    KeySource key;
    std::string iv;
    std::string from;
    std::string to;
    bool mayReplace = false;
};

void addOptions(CLI::App& command, Options& options) {
    addText(command, "FROM", "", options.from, "file to read, or -").required();
    addText(command, "TO", "", options.to, "file to write, or -").required();
    addKeyOptions(command, options.key, true);
    addText(command, "--iv", "HEX", options.iv, "IV that is not in the message");
    addForce(command, options.mayReplace);
}

/// Runs a stream of either direction over a file.
template <class Stream>
int run(const Options& options, bool isEncryption) {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher(ul::text(options.key.cipher));
    const Bytes iv = parseHex("--iv", options.iv);
    if (!options.iv.empty() && iv.getUsed() != cipher->getIVSize())
        throw Problem(Misuse, "--iv needs " + std::to_string(cipher->getIVSize()) + " bytes for " + options.key.cipher);
    Input input(options.from);
    const Bytes key = getKey(options.key, cipher->getKeySize(), isEncryption);
    Output output(options.to, options.mayReplace);
    const auto stream = options.iv.empty() ? std::make_unique<Stream>(cipher, key)
                                           : std::make_unique<Stream>(cipher, key, ul::CBytes(iv));
    readPieces(input, pieceSize, [&](ul::CBytes piece) { output.write(stream->update(piece)); });
    output.write(stream->finish());
    output.commit();
    return Done;
}

int encrypt(const Options& options) {
    return run<sarn::CStreamEncryptor>(options, true);
}

int decrypt(const Options& options) {
    try {
        return run<sarn::CStreamDecryptor>(options, false);
    } catch (const ul::CFileError&) {
        throw;
    } catch (const ul::CError& error) {
        throw Problem(Failed, describeInput(options.from) +
                                  " cannot be decrypted: another key, password or cipher, or the message was " +
                                  "cut or changed (" + error.what() + ")");
    }
}

} // namespace

void addEncrypt(CommandLine& line) {
    const auto options = std::make_shared<Options>();
    addOptions(addCommand(line, line.app, "encrypt", "Encrypts a file", encryptDetails, encryptExample,
                          [options] { return encrypt(*options); }),
               *options);
}

void addDecrypt(CommandLine& line) {
    const auto options = std::make_shared<Options>();
    addOptions(addCommand(line, line.app, "decrypt", "Decrypts a message", decryptDetails, decryptExample,
                          [options] { return decrypt(*options); }),
               *options);
}

} // namespace tool
