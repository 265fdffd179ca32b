// SPDX-License-Identifier: Apache-2.0
#include "sarn/base64.h"

#include "frame/error_queue_mark.h"
#include "frame/openssl_owners.h"
#include "frame/raise.h"

#include "sarn/openssl_init.h"

#include "ul/buffer_stream.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <string>

namespace sarn {

namespace {

constexpr char encodeError[] = "Internal error: error during base64 encode.";
constexpr char decodeError[] = "Internal error: error during base64 decode.";

bool isWhiteSpace(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

/// Counts the white space in `size` characters, at most 255.
int countWhiteSpaceOfRun(const char* text, int size) {
    // White space is found among the characters up to 32, and most texts have long runs without these.
    unsigned char lowest = 255;
    for (int i = 0; i < size; ++i)
        lowest = std::min(lowest, static_cast<unsigned char>(text[i]));
    if (lowest > ' ')
        return 0;
    // A counter of one byte, which cannot overflow here, lets compilers process several characters at a time.
    unsigned char count = 0;
    for (int i = 0; i < size; ++i)
        count = static_cast<unsigned char>(count + isWhiteSpace(text[i]));
    return count;
}

int countWhiteSpace(const char* text, int size) {
    constexpr int runSize = 128;
    int count = 0;
    for (int start = 0; start < size; start += runSize)
        count += countWhiteSpaceOfRun(text + start, std::min(size - start, runSize));
    return count;
}

/// A text in the form that the filter reads: 8-bit characters, with padding added if it was missing.
class FilterText {
public:
    // Each piece is used twice, for narrowing and for counting white space; this size stays in the fastest cache.
    static constexpr int pieceSize = 4096;
    static constexpr int maxLength = INT_MAX - pieceSize;

    /// A character that does not fit 8 bits cannot be Base64; it becomes one character that is not Base64.
    explicit FilterText(const ul::String& text)
        : m_length(text.getLength()),
          m_significant(m_length),
          m_bytes(new char[static_cast<std::size_t>(m_length) + 2]) {
        for (int start = 0; start < m_length; start += pieceSize) {
            const int size = std::min(m_length - start, pieceSize);
            text.copyLatin1(m_bytes.get() + start, start, size);
            m_significant -= countWhiteSpace(m_bytes.get() + start, size);
        }
    }

    const char* getData() const { return m_bytes.get(); }
    int getLength() const { return m_length; }
    /// Number of characters that are not white space.
    int getSignificant() const { return m_significant; }

    /// Replaces white space at the end by `missing` padding characters, one or two.
    void complete(int missing) {
        while (m_length > 0 && isTrimmed(m_bytes[static_cast<std::size_t>(m_length) - 1]))
            --m_length;
        for (; missing > 0; --missing)
            m_bytes[static_cast<std::size_t>(m_length++)] = '=';
    }

private:
    /// Whether ul::String::trimRight() removes the character.
    static bool isTrimmed(char character) { return isWhiteSpace(character) || character == '\v' || character == '\f'; }

    int m_length;
    int m_significant;
    // Not a std::string, which would first be filled with zeros.
    std::unique_ptr<char[]> m_bytes;
};

/// Length of the text for `size` bytes. The filter breaks lines after 64 characters.
std::int64_t getEncodedLength(int size, bool lineBreaks) {
    const std::int64_t characters = (std::int64_t{size} + 2) / 3 * 4;
    return lineBreaks ? characters + (characters + 63) / 64 : characters;
}

/// Puts the Base64 filter before `end`; null if there is no memory for either.
BioPtr createFilter(BioPtr end, bool lineBreaks) {
    BioPtr filter(BIO_new(BIO_f_base64()));
    if (!filter || !end)
        return nullptr;
    BIO_set_flags(filter.get(), lineBreaks ? 0 : BIO_FLAGS_BASE64_NO_NL);
    BIO_push(filter.get(), end.release());
    return filter;
}

} // namespace

ul::String base64Encode(const void* data, int size, bool keepPadding, bool lineBreaks) {
    COpenSSLInit::ensureInitialized();
    const ErrorQueueMark mark;
    BIO* const sink = BIO_new(BIO_s_mem());
    const BioPtr chain = createFilter(BioPtr(sink), lineBreaks);
    // No write has a negative length, so a negative size fails here too.
    if (!chain || BIO_write(chain.get(), data, size) != size || BIO_flush(chain.get()) <= 0)
        raiseError(encodeError);
    char* text = nullptr;
    long length = BIO_get_mem_data(sink, &text);
    // Guards against any failure in the chain: part of a text must not pass for all of it.
    if (length != getEncodedLength(size, lineBreaks))
        raiseError(encodeError);
    // With line breaks the text ends in a line feed, so the padding remains even if the caller asked for none. Keep
    // this: hosts store and compare texts that were written this way.
    while (!keepPadding && length > 0 && text[length - 1] == '=')
        --length;
    return ul::String(text, static_cast<std::size_t>(length));
}

void base64Decode(const ul::String& text, ul::TBuffer<unsigned char>& out) {
    COpenSSLInit::ensureInitialized();
    if (text.getLength() > FilterText::maxLength)
        raiseInvalidArg("base64Decode", "invalid base64 data");
    FilterText bytes(text);
    const int count = bytes.getSignificant();
    const int missing = (4 - count % 4) % 4;
    if (missing == 3)
        raiseInvalidArg("base64Decode", "invalid base64 data");
    if (missing > 0)
        bytes.complete(missing);
    // In 64 bits: a 32-bit product would overflow, which is undefined, from 357,913,942 characters on.
    const int expected = static_cast<int>(count * 6LL / 8);

    const ErrorQueueMark mark;
    const bool hasWhiteSpace = count != text.getLength();
    const BioPtr chain = createFilter(BioPtr(BIO_new_mem_buf(bytes.getData(), bytes.getLength())), hasWhiteSpace);
    if (!chain)
        raiseError(decodeError);
    out.ensureAllocated(expected);
    const int read = BIO_read(chain.get(), out.getData(), expected);
    // Padding counts as significant, so a valid text may give fewer bytes than expected. Keep the tolerance of three,
    // although damage may pass for padding: hosts load old files that need it. The first comparison is for texts of at
    // most two expected bytes, where the result of a failed read, -1, would pass the second.
    if (read < 0 || read < expected - 3 || read > expected)
        raiseInvalidArg("base64Decode", "invalid base64 data");
    out.setUsed(read);
}

void base64EncodeBufferWithCRLF(ul::TBuffer<unsigned char>& buffer) {
    const std::string text = base64Encode(buffer.getData(), buffer.getUsed(), true, true).toLatin1();
    buffer.setUsed(0);
    ul::CBufferStream stream(&buffer, 2.0);
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        stream.write(text.data() + start, static_cast<int>(end - start), nullptr);
        stream.write("\r\n", 2, nullptr);
        start = end + 1;
    }
}

} // namespace sarn
