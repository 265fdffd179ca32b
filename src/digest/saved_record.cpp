// SPDX-License-Identifier: Apache-2.0
#include "sarn/saved_record.h"

#include "frame/raise.h"

#include "sarn/openssl_digest.h"

#include "ul/buffer_stream.h"

#include <algorithm>

namespace sarn::detail {

namespace {

// The version in the first saved states. The contexts are the same in every libcrypto since 1.1.0, so all builds write
// this version, and each build reads the states of all others.
constexpr int opensslVersion = 0x1010102F;

// The fields of each record in order. A writer visits the state of a digest, a reader an empty state.

template <class Visitor, class State>
void visitHash(Visitor& visitor, const HashContext& context, int digestSize, State& state) {
    constexpr int stateVersion = 1;
    visitor.constant(stateVersion, "Unsupported OpenSSL digest state data version.");
    visitor.versionOfOpenSSL(opensslVersion);
    visitor.constant(digestSize, "Bad OpenSSL digest size in state stream.");
    visitor.constant(context.size, "Bad OpenSSL digest context size in state stream.");
    visitor.context(context);
    visitor.result(state.result, digestSize);
    visitor.flag(state.initialized);
    visitor.flag(state.finished);
    // Checked last: a damaged or missing flag is reported before a damaged context.
    visitor.checkContext(context, digestSize);
}

template <class Visitor, class State>
void visitChecksum(Visitor& visitor, const char* badVersion, State& state) {
    constexpr int stateVersion = 1;
    visitor.constant(stateVersion, badVersion);
    visitor.checksum(state.checksum);
    visitor.flag(state.finished);
}

template <class Visitor, class State>
void visitCombination(Visitor& visitor, IDigest& first, IDigest& second, int digestSize, State& state) {
    constexpr int stateVersion = 1;
    visitor.constant(stateVersion, "Unsupported version of TDigestCombined state data.");
    visitor.partAndRest(first, [&] {
        visitor.partAndRest(second, [&] {
            visitor.result(state.result, digestSize);
            visitor.flag(state.finished);
            visitor.flag(state.resultReady);
        });
    });
}

/// Writes the fields that it visits.
class Writer {
public:
    explicit Writer(ul::CDataOutStream& stream) : m_stream(stream) {}

    void constant(int value, const char*) { m_stream.writeInt32(value); }
    void versionOfOpenSSL(int value) { m_stream.writeInt32(value); }
    void context(const HashContext& context) {
        context.exchange(context.data);
        m_stream.write(context.data, context.size);
    }
    void checkContext(const HashContext&, int) {}
    void checksum(const std::array<unsigned char, 4>& bytes) { m_stream.write(bytes.data(), 4); }
    void result(const ul::TBuffer<unsigned char>& result, int) {
        m_stream.writeInt32(result.getUsed()).write(result.getData(), result.getUsed());
    }
    void flag(bool value) { m_stream.writeBool(value); }
    template <class Rest>
    void partAndRest(const IDigest& digest, const Rest& rest) {
        digest.storeState(m_stream);
        rest();
    }

private:
    ul::CDataOutStream& m_stream;
};

/// Reads the fields that it visits and refuses values that no writer writes.
class Reader {
public:
    explicit Reader(ul::CDataInStream& stream) : m_stream(stream) {}

    void constant(int expected, const char* message) {
        if (m_stream.readInt32() != expected)
            raiseError(message);
    }
    void versionOfOpenSSL(int expected) {
        if (const int actual = m_stream.readInt32(); actual != expected)
            throw COpenSSLVersionMismatchError("digest state data", actual, expected);
    }
    void context(const HashContext& context) {
        m_stream.read(context.data, context.size);
        context.exchange(context.data);
    }
    void checkContext(const HashContext& context, int digestSize) {
        if (!context.isUsable(context.data, digestSize))
            raiseError("Bad OpenSSL digest context in state stream.");
    }
    void checksum(std::array<unsigned char, 4>& bytes) { m_stream.read(bytes.data(), 4); }
    void result(ul::TBuffer<unsigned char>& result, int digestSize);
    void flag(bool& value) { m_stream.readBool(value); }
    template <class Rest>
    void partAndRest(IDigest& digest, const Rest& rest);

private:
    ul::CDataInStream& m_stream;
};

/// Restores the part's previous state if the rest is refused.
template <class Rest>
void Reader::partAndRest(IDigest& digest, const Rest& rest) {
    ul::TBuffer<unsigned char> old;
    ul::CBufferStream buffer(&old, 2.0);
    ul::CDataOutStream out(buffer);
    digest.storeState(out);
    digest.loadState(m_stream);
    try {
        rest();
    } catch (...) {
        ul::CBufferInStream bytes(old);
        ul::CDataInStream in(bytes);
        digest.loadState(in);
        throw;
    }
}

void Reader::result(ul::TBuffer<unsigned char>& result, int digestSize) {
    const int length = m_stream.readInt32();
    if (length < 0)
        raiseError("Bad digest result length in state stream.");
    // A shorter result is still delivered in the digest's size.
    result.ensureAllocated(digestSize);
    std::fill_n(result.getData(), digestSize, static_cast<unsigned char>(0));
    // The length is untrusted: memory grows only as bytes arrive.
    std::array<unsigned char, 4096> chunk;
    while (result.getUsed() < length) {
        const int count = std::min(length - result.getUsed(), static_cast<int>(chunk.size()));
        m_stream.read(chunk.data(), count);
        result.insert(result.getUsed(), chunk.data(), count);
    }
}

} // namespace

void storeHash(ul::CDataOutStream& stream, const HashContext& context, int digestSize, const HashState& state) {
    Writer writer(stream);
    visitHash(writer, context, digestSize, state);
}

HashState loadHash(ul::CDataInStream& stream, const HashContext& context, int digestSize) {
    Reader reader(stream);
    HashState state;
    visitHash(reader, context, digestSize, state);
    return state;
}

void storeChecksum(ul::CDataOutStream& stream, const ChecksumState& state) {
    Writer writer(stream);
    visitChecksum(writer, nullptr, state);
}

ChecksumState loadChecksum(ul::CDataInStream& stream, const char* badVersion) {
    Reader reader(stream);
    ChecksumState state{};
    visitChecksum(reader, badVersion, state);
    return state;
}

void storeCombination(ul::CDataOutStream& stream, IDigest& first, IDigest& second, int digestSize,
                      const CombinationState& state) {
    Writer writer(stream);
    visitCombination(writer, first, second, digestSize, state);
}

CombinationState loadCombination(ul::CDataInStream& stream, IDigest& first, IDigest& second, int digestSize) {
    Reader reader(stream);
    CombinationState state;
    visitCombination(reader, first, second, digestSize, state);
    return state;
}

} // namespace sarn::detail
