// SPDX-License-Identifier: Apache-2.0
#include "sarn/encoding.h"

#include "frame/error_queue_mark.h"
#include "frame/openssl_owners.h"
#include "frame/raise.h"

#include "sarn/openssl_init.h"

#include "ul/buffer_stream.h"

#include <algorithm>
#include <climits>
#include <string>

namespace sarn {

namespace {

constexpr char encodeError[] = "Internal error: error during base64 encode.";
constexpr char decodeError[] = "Internal error: error during base64 decode.";

/// How many characters are not white space.
int countSignificant(const std::string& text) {
    // Counts of one byte, while they cannot overflow: many are summed up in one instruction.
    constexpr std::size_t runSize = 128;
    std::size_t whiteSpace = 0;
    for (std::size_t start = 0; start < text.size(); start += runSize) {
        const char* const run = text.data() + start;
        const std::size_t size = std::min(text.size() - start, runSize);
        unsigned char found = 0;
        for (std::size_t i = 0; i < size; ++i)
            found = static_cast<unsigned char>(found + (run[i] == ' ') + (run[i] == '\t') + (run[i] == '\n') +
                                               (run[i] == '\r'));
        whiteSpace += found;
    }
    return static_cast<int>(text.size() - whiteSpace);
}

/// The Base64 filter ahead of `end`, or null if there is no memory for either.
BioPtr createFilter(BioPtr end, bool lineBreaks) {
    BioPtr filter(BIO_new(BIO_f_base64()));
    if (!filter || !end)
        return nullptr;
    BIO_set_flags(filter.get(), lineBreaks ? 0 : BIO_FLAGS_BASE64_NO_NL);
    BIO_push(filter.get(), end.release());
    return filter;
}

/// Appends the padding that a text lacks, of `missing` characters.
void complete(std::string& text, int missing) {
    text.erase(text.find_last_not_of(" \t\n\v\f\r") + 1);
    text.append(static_cast<std::size_t>(missing), '=');
}

} // namespace

ul::String base64Encode(const void* data, int size, bool keepPadding, bool lineBreaks) {
    COpenSSLInit::ensureInitialized();
    if (size < 0)
        raiseInvalidArg("base64Encode", "invalid data size");
    ErrorQueueMark mark;
    BIO* const sink = BIO_new(BIO_s_mem());
    const BioPtr chain = createFilter(BioPtr(sink), lineBreaks);
    if (!chain || BIO_write(chain.get(), size > 0 ? data : "", size) != size || BIO_flush(chain.get()) <= 0)
        mark.raise(encodeError);
    char* text = nullptr;
    long length = BIO_get_mem_data(sink, &text);
    // With line breaks a line feed is the last character, so that the padding stays.
    while (!keepPadding && length > 0 && text[length - 1] == '=')
        --length;
    return ul::String(text, static_cast<std::size_t>(length));
}

void base64Decode(const ul::String& text, ul::TBuffer<unsigned char>& out) {
    COpenSSLInit::ensureInitialized();
    // What is no 8-bit character is no Base64 either and stays one character.
    std::string bytes = text.toLatin1();
    const int count = countSignificant(bytes);
    const int missing = (4 - count % 4) % 4;
    if (missing == 3)
        raiseInvalidArg("base64Decode", "invalid base64 data");
    if (missing > 0)
        complete(bytes, missing);
    if (bytes.size() > INT_MAX)
        raiseInvalidArg("base64Decode", "invalid base64 data");
    const int expected = static_cast<int>(count * 6LL / 8);

    ErrorQueueMark mark;
    const bool hasWhiteSpace = count != text.getLength();
    const BioPtr chain =
        createFilter(BioPtr(BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size()))), hasWhiteSpace);
    if (!chain)
        mark.raise(decodeError);
    out.ensureAllocated(expected);
    const int read = BIO_read(chain.get(), out.getData(), expected);
    mark.drop();
    // The padding counted as significant, so that up to three bytes may be missing.
    if (read < 0 || read < expected - 3 || read > expected)
        raiseInvalidArg("base64Decode", "invalid base64 data");
    out.setUsed(read);
}

void base64EncodeBufferWithCRLF(ul::TBuffer<unsigned char>& buffer) {
    const std::string text = base64Encode(buffer.getData(), buffer.getUsed(), true, true).toLatin1();
    buffer.setUsed(0);
    ul::CBufferStream stream(&buffer, 2.0);
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find_first_of("\r\n", start), text.size());
        if (end > start) {
            stream.write(text.data() + start, static_cast<int>(end - start), nullptr);
            stream.write("\r\n", 2, nullptr);
        }
        start = end + 1;
    }
}

} // namespace sarn
