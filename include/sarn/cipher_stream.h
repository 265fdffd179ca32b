// SPDX-License-Identifier: Apache-2.0
/// \file
/// The common part of stream_encryptor.h and stream_decryptor.h. Header-only.
#pragma once

#include "sarn/cipher.h"

#include "ul/bytes.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <numeric>
#include <utility>

namespace sarn {

/// Common base of both directions: the cipher, the key, the IV of the next call, and bytes not yet processed.
///
/// A stream holds the result of one piece, however long that is, and at most half a mebibyte of unprocessed bytes. Its
/// copy of the key and its plaintext are wiped when it is destroyed. An error in a call ends the stream: every further
/// call raises ul::CBadStateError "The cipher stream has ended." Owned by one thread at a time.
class CCipherStream {
public:
    CCipherStream(const CCipherStream&) = delete;
    CCipherStream& operator=(const CCipherStream&) = delete;

protected:
    /// Requires a cipher whose calls can be chained: the last block of one ciphertext is the IV of the next.
    /// \throws ul::CInvalidArgError "cipher cannot be NULL"; "cipher cannot work in pieces" if chained calls give
    ///         different bytes than one call, as in counter mode; any error of the cipher, for example "invalid key
    ///         size".
    CCipherStream(const char* where, ul::P<ICipher> cipher, const ul::TCryptBuffer<unsigned char>& key)
        : m_cipher(checkCipher(where, std::move(cipher))),
          m_key(key),
          m_ivSize(m_cipher->getIVSize()),
          m_blockSize(m_cipher->getBlockSize()),
          m_batchSize(m_cipher->getID() == "bfcbc" && m_blockSize == 8 ? 1 << 19 : m_blockSize) {
        m_tail.ensureAllocated(1); // an empty IV must not be null, which has another meaning
        if (m_blockSize < 1 || (m_ivSize != 0 && m_ivSize != m_blockSize) || !givesTheSameInPieces())
            throw ul::CInvalidArgError(where, "cipher cannot work in pieces", ul::CProps());
    }

    ~CCipherStream() = default;

    /// Sets the IV of the first call. `where` is the qualified name of the operation, for the error.
    /// \throws ul::CInvalidArgError "invalid IV size".
    void setIV(const char* where, ul::CBytes iv) {
        if (iv.size() != static_cast<std::size_t>(m_ivSize))
            throw ul::CInvalidArgError(where, "invalid IV size", ul::CProps());
        m_tail.init(iv.data(), m_ivSize);
    }

    /// The IV of the next call.
    const unsigned char* getIV() const { return m_tail.getData() + m_tail.getUsed() - m_ivSize; }

    /// Starts a call and makes room for the result of `size` more bytes and the unprocessed ones.
    void begin(const char* where, int size) {
        const long long room = static_cast<long long>(size) + m_waiting + m_ivSize + 2LL * m_blockSize;
        if (room > INT_MAX)
            throw ul::CInvalidArgError(where, "data is too large", ul::CProps());
        if (!std::exchange(m_isOpen, false))
            throw ul::CBadStateError("The cipher stream has ended.");
        if (room > m_out.getAllocated())
            wipeResult(); // growth gives the block back
        m_out.setUsed(0);
        m_out.ensureAllocated(static_cast<int>(room));
    }

    /// Ends a call and leaves the stream open.
    ul::CBytes end() {
        m_isOpen = true;
        return m_out;
    }

    /// Passes all whole blocks of the unprocessed bytes and of a piece to `process`, if they make a batch. The rest
    /// waits.
    template <class Process>
    void processBatch(const unsigned char* data, int left, Process process) {
        if (m_waiting > 0) {
            // Before a piece that is worth a call of its own, only the last block is completed: copying costs time.
            const int partial = m_waiting % m_blockSize;
            const int completed = partial == 0 ? m_waiting : m_waiting - partial + m_blockSize;
            const int wanted = left < m_batchSize ? m_batchSize : completed;
            moveToRest(data, left, wanted);
            if (m_waiting == wanted) {
                process(m_rest.getData(), m_waiting);
                m_waiting = 0;
            }
        }
        const int whole = left < m_batchSize ? 0 : left - left % m_blockSize;
        if (whole > 0)
            process(data, whole);
        data += whole;
        left -= whole;
        moveToRest(data, left, m_batchSize);
    }

    /// Wipes the whole block of the result.
    void wipeResult() { ul::wipe(m_out.getData(), static_cast<std::size_t>(m_out.getAllocated())); }

    /// Never null.
    const ul::P<ICipher> m_cipher;
    /// A copy of the key.
    const ul::TCryptBuffer<unsigned char> m_key;
    /// Size of the IV in bytes.
    const int m_ivSize;
    /// Size of a block in bytes.
    const int m_blockSize;
    /// Number of bytes worth a call. Blowfish takes as long to set up a key as to process some kilobytes.
    const int m_batchSize;
    /// The last bytes of the ciphertext so far, or the IV of its first block. It ends with the IV of the next call.
    ul::TBuffer<unsigned char> m_tail;
    /// Its first m_waiting bytes are unprocessed. The used size never shrinks, so that the buffer wipes once at the end
    /// instead of in every call.
    ul::TCryptBuffer<unsigned char> m_rest;
    /// Number of unprocessed bytes.
    int m_waiting = 0;
    /// The result of the call. Wiped explicitly, to wipe once here too.
    ul::TBuffer<unsigned char> m_out;

private:
    /// Moves bytes from the front of a piece to the unprocessed ones, until these are `wanted`.
    void moveToRest(const unsigned char*& data, int& left, int wanted) {
        const int count = std::min(left, wanted - m_waiting);
        if (count == 0)
            return;
        m_rest.setUsed(std::max(m_rest.getUsed(), m_waiting + count));
        std::memcpy(m_rest.getData() + m_waiting, data, static_cast<std::size_t>(count));
        m_waiting += count;
        data += count;
        left -= count;
    }

    static ul::P<ICipher> checkCipher(const char* where, ul::P<ICipher> cipher) {
        if (!cipher)
            throw ul::CInvalidArgError(where, "cipher cannot be NULL", ul::CProps());
        return cipher;
    }

    bool givesTheSameInPieces() {
        const int half = 16 * m_blockSize; // long enough that no key stream repeats by chance
        ul::TBuffer<unsigned char> plain(2 * half, -1);
        // Not zeros, which output feedback turns into its key stream and so into its next IV.
        std::iota(plain.getData(), plain.getData() + 2 * half, static_cast<unsigned char>(1));
        ul::TBuffer<unsigned char> atOnce;
        ul::TBuffer<unsigned char> inPieces;
        m_cipher->encryptWithoutPadding(m_key, plain.getData(), 2 * half, atOnce, false, plain.getData());
        m_cipher->encryptWithoutPadding(m_key, plain.getData(), half, inPieces, false, plain.getData());
        if (inPieces.getUsed() != half)
            return false;
        const ul::TBuffer<unsigned char> first(inPieces);
        const unsigned char* const nextIV = first.getData() + half - m_ivSize;
        m_cipher->encryptWithoutPadding(m_key, plain.getData() + half, half, inPieces, true, nextIV);
        return ul::CBytes(atOnce) == inPieces;
    }

    bool m_isOpen = true;
};

} // namespace sarn
