// SPDX-License-Identifier: Apache-2.0
#include "failures/injection.h"
#include "failures/scenarios.h"
#include "support/expect.h"

#include "sarn/signature.h"

#include "ul/buffer_stream.h"
#include "ul/data_stream.h"
#include "ul/file.h"
#include "ul/ini.h"

#include <stdexcept>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;

/// A folder with one file in it.
struct Place {
    explicit Place(const std::string& content) : file(folder.write("file", content)) {}

    TempFolder folder;
    ul::CWindowsPath file;
};

Run runReadText() {
    const auto place = std::make_shared<Place>(std::string(10000, 'x'));
    return [=] { return toUTF8Bytes(ul::readUTF8TextFile(place->file)); };
}

/// Nothing is left beside the file, unless it could not be removed.
void expectAlone(const Place& place) {
    if (!Injection::hasFailed("unlinkat") && place.folder.list() != std::vector<std::string>{"file"})
        throw std::logic_error("something is left beside the file");
}

/// Whatever happens, the file is the old one or the new one, and alone.
void expectOldOrNew(const Place& place, const std::string& before, const std::string& after) {
    const std::string now = place.folder.read("file");
    if (now != before && now != after)
        throw std::logic_error("the file is neither the old nor the new one");
    expectAlone(place);
}

Run runWriteText() {
    const auto place = std::make_shared<Place>("old");
    return [=] {
        const std::string text(10000, 'y');
        place->folder.write("file", "old");
        try {
            ul::writeUTF8TextFile(place->file, text.c_str());
        } catch (...) {
            expectOldOrNew(*place, "old", text);
            throw;
        }
        return toBytes(place->folder.read("file"));
    };
}

Run runStoreSignature() {
    const auto place = std::make_shared<Place>("old");
    const auto signature = std::make_shared<Buffer>();
    fill(*signature, makePattern(128));
    return [=] {
        place->folder.write("file", "old");
        try {
            sarn::storeSignatureBase64(place->file, *signature);
        } catch (...) {
            if (const std::string now = place->folder.read("file"); now != "old" && now.size() < 128)
                throw std::logic_error("the file is neither the old nor the new one");
            expectAlone(*place);
            throw;
        }
        return toBytes(place->folder.read("file"));
    };
}

Run runLoadSignature() {
    const auto place = std::make_shared<Place>("b25seSBjb3B5\r\n");
    return [=] {
        Buffer signature;
        sarn::loadSignatureBase64(place->file, signature);
        return toBytes(signature);
    };
}

Run runStream() {
    const auto place = std::make_shared<Place>("content");
    return [=] {
        ul::CWindowsFileInStream stream(place->file);
        Bytes content(static_cast<std::size_t>(stream.getLength()));
        stream.read(content.data(), static_cast<int>(content.size()));
        return stream.isEndOfStream() ? content : Bytes();
    };
}

Run runINI() {
    const auto place = std::make_shared<Place>("[a]\nb=c\n[d]\ne=f\n");
    return [=] {
        const ul::P<ul::CINIContent> content = ul::CINIContent::parseFile(place->file);
        content->setSectionValue("d", "g", "h");
        ul::TArray<ul::String> names;
        content->getSectionValueNames("d", names);
        ul::String value;
        content->tryGetSectionValue(value, "d", "g");
        return toUTF8Bytes(names[1] + value);
    };
}

Run runRelativePath() {
    return [] { return toUTF8Bytes(ul::CWindowsPath("a\\b\\..\\c").getString()); };
}

Run runText() {
    return [] {
        ul::String text = "the only copy of somebody's data";
        text += ul::toString(1234567) + ul::toHexString(255);
        return toUTF8Bytes(text.Mid(4, -1) + ul::String::fromUTF8("\xC3\xBC", 2));
    };
}

Run runErrors() {
    return [] {
        const ul::CError cause("cause", "", -1, ul::CProps().add("name", "value"), nullptr);
        const ul::CError error("error", "text", 7, ul::CProps().add("other", "value"), &cause);
        const ul::P<ul::CError> copy = const_cast<ul::CError&>(error).clone();
        return toUTF8Bytes(copy->getMessage() + copy->getCause()->getMessage() + copy->getProps().getValue(0));
    };
}

Run runDataStream() {
    return [] {
        Buffer buffer;
        ul::CBufferStream stream(&buffer, 1.0);
        ul::CDataOutStream out(stream);
        for (int i = 0; i < 100; ++i)
            out.writeInt32(i).writeBool(true);
        return toBytes(buffer);
    };
}

} // namespace

Scenarios makeFileScenarios() {
    const std::vector<std::string> ends = {"Unexpected end of stream."};
    const std::vector<std::string> writing = {"Random bytes are not available."};
    return {
        {"ReadText", {}, runReadText},
        {"WriteText", writing, runWriteText},
        {"StoreSignatureFile",
         {"Random bytes are not available.", "Internal error: error during base64 encode."},
         runStoreSignature},
        {"LoadSignatureFile", {"Internal error: error during base64 decode.", "invalid base64 data"}, runLoadSignature},
        {"FileStream", ends, runStream},
        {"INIFile", {}, runINI},
        {"RelativePath", {}, runRelativePath},
        {"Text", {}, runText},
        {"Errors", {}, runErrors},
        {"DataStream", {}, runDataStream},
    };
}

} // namespace sarn_test
