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

constexpr char details[] =
    R"(Encodes in lines of 64 characters, or with --one-line without any line end. Decodes what the library decodes: white
space is ignored, missing padding is completed in a text without line ends, and some damage near the end is not
noticed. A text to decode is read into memory: 2^31 - 65537 bytes at most.)";
constexpr char example[] = R"($ printf hello | sarn base64
aGVsbG8=
$ echo aGVsbG8= | sarn base64 --decode
hello)";

// Whole lines of 48 bytes, so that the texts of the pieces together are the text of all bytes.
constexpr int pieceSize = 48 * 4096;

struct Options {
    bool isDecoding = false;
    bool isOneLine = false;
    bool isUnpadded = false;
    std::string from = "-";
    std::string to = "-";
    bool mayReplace = false;
};

void decode(Input& input, Output& output) {
    const Bytes content = readAll(input, fileLimit);
    const std::string_view text = ul::CBytes(content).asText();
    ul::TBuffer<unsigned char> bytes;
    try {
        sarn::base64Decode(ul::String(text.data(), text.size()), bytes);
    } catch (const ul::CInvalidArgError&) {
        throw Problem(Failed, input.getName() + " is not Base64 text, or was cut");
    }
    output.write(bytes);
}

void encode(const Options& options, Input& input, Output& output) {
    const bool isPadded = !options.isUnpadded;
    readPieces(input, pieceSize, [&](ul::CBytes piece) {
        output.write(
            sarn::base64Encode(piece.data(), piece.getIntSize("encode"), isPadded, !options.isOneLine).toLatin1());
    });
}

int run(const Options& options) {
    Input input(options.from);
    Output output(options.to, options.mayReplace);
    if (options.isDecoding)
        decode(input, output);
    else
        encode(options, input, output);
    output.commit();
    return Done;
}

} // namespace

void addBase64(CommandLine& line) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = addCommand(line, line.app, "base64", "Encodes and decodes Base64", details, example,
                                   [options] { return run(*options); });
    addText(command, "FROM", "", options->from, "file to read (default: -)");
    addText(command, "TO", "", options->to, "file to write (default: -)");
    command.add_flag("-d,--decode", options->isDecoding, "decode");
    CLI::Option* const oneLine = command.add_flag("--one-line", options->isOneLine, "do not break lines");
    command.add_flag("--no-padding", options->isUnpadded, "leave out = at the end")->needs(oneLine);
    addForce(command, options->mayReplace);
}

} // namespace tool
