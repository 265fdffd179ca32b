// SPDX-License-Identifier: Apache-2.0
#include "command.h"
#include "identifiers.h"
#include "saved_state.h"
#include "status.h"

#include <memory>

namespace tool {

namespace {

constexpr char details[] =
    R"(Reads a state that "sarn digest --save" wrote, or the bytes that storeState() of the library wrote. Such
bytes do not name their digest: --id does if several digests write states of the same form. The library checks
the state; if it refuses the state, the exit status is 1 and the message says why. The state of a running
digest contains up to 63 bytes of the input.)";
constexpr char example[] = R"($ printf abc | sarn digest crc32 --save abc.state
c2412435  -
$ sarn state abc.state
format        text
digest        crc32
bytes so far  3
version       1
checksum      0x352441C2
finished      no)";

struct Options {
    std::string name;
    std::string id;
    bool isJson = false;
};

int showState(const Options& options) {
    const SavedState state = readState(options.name, options.id);
    Record record;
    record.add("format", state.isText ? "text" : "binary").add("digest", state.id);
    if (state.size)
        record.add("bytes so far", *state.size);
    ul::CBufferInStream stream(state.bytes);
    ul::CDataInStream in(stream);
    addFields(record, in, state.id, "");
    print(options.isJson ? record.toJson() + "\n" : record.toLines());
    return Done;
}

} // namespace

void addState(CommandLine& line) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = addCommand(line, line.app, "state", "Shows a saved state of a digest", details, example,
                                   [options] { return showState(*options); });
    addText(command, "FILE", "", options->name, "the saved state").required();
    limitTo(addText(command, "--id", "ID", options->id, "the digest"), getDigestIds());
    addJson(command, options->isJson);
}

} // namespace tool
