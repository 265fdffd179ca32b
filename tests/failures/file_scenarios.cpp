// SPDX-License-Identifier: Apache-2.0
#include "failures/call_watch.h"
#include "failures/scenarios.h"
#include "support/expect.h"
#include "support/temp_folder.h"

#include "sarn/signature.h"

#include "ul/buffer_stream.h"
#include "ul/data_stream.h"
#include "ul/file.h"
#include "ul/ini.h"

#include <algorithm>
#include <stdexcept>

namespace sarn_test {

namespace {

struct Place {
    explicit Place(const std::string& content) : file(folder.write("file", content)) {}

    TempFolder folder;
    ul::CWindowsPath file;
};

Bytes readText() {
    static const Place place(std::string(10000, 'x'));
    return toUTF8Bytes(ul::readUTF8TextFile(place.file));
}

/// `write` replaces a file. If it fails, the file is the old one or a new one of `size` bytes. It is the only one in
/// its folder unless the removal of another failed.
template <class Write>
Bytes replaceFile(std::size_t size, Write write) {
    static const Place place("old");
    place.folder.write("file", "old");
    const CallWatch watch;
    try {
        write(place.file);
    } catch (...) {
        if (const std::string now = place.folder.read("file"); now != "old" && now.size() != size)
            throw std::logic_error("the file is neither the old nor the new one");
        const std::vector<Call> removals = watch.getCalls("unlinkat");
        const bool isRemoved =
            std::none_of(removals.begin(), removals.end(), [](const Call& call) { return call.fails; });
        if (isRemoved && place.folder.list() != std::vector<std::string>{"file"})
            throw std::logic_error("something is left beside the file");
        if (!isRemoved)
            place.folder.clear();
        throw;
    }
    return toBytes(place.folder.read("file"));
}

Bytes writeText() {
    static const ul::String text(std::string(1000, 'y').c_str());
    return replaceFile(1000, [](const ul::CWindowsPath& file) { ul::writeUTF8TextFile(file, text); });
}

Bytes storeSignature() {
    static const Bytes bytes = makePattern(128);
    Buffer signature;
    fill(signature, bytes);
    // Two lines and a part of one, each with a line end of two characters.
    return replaceFile(178, [&](const ul::CWindowsPath& file) { sarn::storeSignatureBase64(file, signature); });
}

Bytes loadSignature() {
    static const Place place("b25seSBjb3B5\r\n");
    Buffer signature;
    sarn::loadSignatureBase64(place.file, signature);
    return toBytes(signature);
}

Bytes readStream() {
    static const Place place("content");
    ul::CWindowsFileInStream stream(place.file);
    Bytes content(static_cast<std::size_t>(stream.getLength()));
    stream.read(content.data(), static_cast<int>(content.size()));
    return stream.isEndOfStream() ? content : Bytes();
}

Bytes useINI() {
    static const Place place("[a]\nb=c\n[d]\ne=f\n");
    const ul::P<ul::CINIContent> content = ul::CINIContent::parseFile(place.file);
    content->setSectionValue("d", "g", "h");
    ul::TArray<ul::String> names;
    content->getSectionValueNames("d", names);
    ul::String value;
    content->tryGetSectionValue(value, "d", "g");
    return toUTF8Bytes(names[1] + value);
}

Bytes composeText() {
    ul::String text = "the only copy of somebody's data";
    text += ul::toString(1234567) + ul::toHexString(255);
    return toUTF8Bytes(text.Mid(4, -1) + ul::String::fromUTF8("\xC3\xBC", 2));
}

Bytes composeErrors() {
    const ul::CError cause("cause", "", -1, ul::CProps().add("name", "value"), nullptr);
    ul::CError error("error", "text", 7, ul::CProps().add("other", "value"), &cause);
    const ul::P<ul::CError> copy = error.clone();
    return toUTF8Bytes(copy->getMessage() + copy->getCause()->getMessage() + copy->getProps().getValue(0));
}

Bytes writeNumbers() {
    Buffer buffer;
    ul::CBufferStream stream(&buffer, 1.0);
    ul::CDataOutStream out(stream);
    for (int i = 0; i < 100; ++i)
        out.writeInt32(i).writeBool(true);
    return toBytes(buffer);
}

} // namespace

Scenarios makeFileScenarios() {
    return {
        {"ReadText", readText},
        {"WriteText", writeText},
        {"StoreSignatureFile", storeSignature},
        {"LoadSignatureFile", loadSignature},
        {"FileStream", readStream},
        {"INIFile", useINI},
        {"RelativePath", [] { return toUTF8Bytes(ul::CWindowsPath("a\\b\\..\\c").getString()); }},
        {"Text", composeText},
        {"Errors", composeErrors},
        {"DataStream", writeNumbers},
    };
}

} // namespace sarn_test
