// SPDX-License-Identifier: Apache-2.0
/// \file
/// Encryption of data that need not fit into memory, piece by piece. Header-only.
#pragma once

#include "sarn/cipher.h"

#include "ul/bytes.h"
#include "ul/random.h"
#include "ul/text.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <utility>

namespace sarn {

/// What both directions share: the cipher, the key, the IV of the next call, and the bytes that wait for others.
///
/// A stream holds the result of one piece, however long it is, and half a mebibyte at most that waits to be worked on.
/// Its copy of the key, and what it holds of the plaintext, are wiped with it. After an error in a call it cannot go on: every further call raises
/// ul::CBadStateError "The cipher stream has ended." Owned by one thread at a time.
class CCipherStream {
public:
    CCipherStream(const CCipherStream&) = delete;
    CCipherStream& operator=(const CCipherStream&) = delete;

protected:
    /// Takes a cipher whose calls can be chained: the last block of one ciphertext is the IV of the next.
    /// \throws ul::CInvalidArgError "cipher cannot work in pieces" if that gives other bytes than one call would, as it
    ///         does in every mode but CBC; whatever the cipher throws, "invalid key size" for example
    CCipherStream(const char* where, ul::P<ICipher> cipher, const ul::TCryptBuffer<unsigned char>& key)
        : m_cipher(std::move(cipher)),
          m_key(key),
          m_ivSize(m_cipher->getIVSize()),
          m_blockSize(m_cipher->getBlockSize()),
          m_batchSize(m_blockSize == 8 ? 1 << 19 : m_blockSize) {
        m_iv.ensureAllocated(1); // an IV of no bytes is one, too: null would mean something else
        m_rest.ensureAllocated(m_batchSize);
        if (m_blockSize < 1 || (m_ivSize != 0 && m_ivSize != m_blockSize) || !givesTheSameInPieces())
            throw ul::CInvalidArgError(where, "cipher cannot work in pieces", ul::CProps());
    }

    ~CCipherStream() {
        wipe(m_rest);
        wipe(m_out);
    }

    void setIV(const char* where, ul::CBytes iv) {
        if (iv.size() != static_cast<std::size_t>(m_ivSize))
            throw ul::CInvalidArgError(where, "invalid IV size", ul::CProps());
        m_iv.init(iv.data(), m_ivSize);
    }

    /// Starts a call with room for what `size` more bytes and those that wait give.
    void begin(const char* where, int size) {
        const long long room = static_cast<long long>(size) + m_rest.getUsed() + m_ivSize + 2LL * m_blockSize;
        if (room > INT_MAX)
            throw ul::CInvalidArgError(where, "data is too large", ul::CProps());
        if (!std::exchange(m_isOpen, false))
            throw ul::CBadStateError("The cipher stream has ended.");
        if (room > m_out.getAllocated())
            wipe(m_out); // growth gives the block back
        m_out.setUsed(0);
        m_out.ensureAllocated(static_cast<int>(room));
    }

    /// Ends a call that leaves the stream open.
    ul::CBytes end() {
        m_isOpen = true;
        return m_out;
    }

    /// Moves bytes from the front of a piece to the end of `buffer` until that holds `size`.
    static void moveFront(const unsigned char*& data, int& left, ul::TBuffer<unsigned char>& buffer, int size) {
        const int count = std::min(left, size - buffer.getUsed());
        buffer.insert(buffer.getUsed(), data, count);
        data += count;
        left -= count;
    }

    /// The IV of the call after the one that had `size` bytes of ciphertext at `ciphertext`.
    void setNextIV(const unsigned char* ciphertext, int size) { m_iv.init(ciphertext + size - m_ivSize, m_ivSize); }

    const ul::P<ICipher> m_cipher;
    const ul::TCryptBuffer<unsigned char> m_key;
    const int m_ivSize;
    const int m_blockSize;
    // How many bytes are worth a call. A key takes the old ciphers, whose blocks have 8 bytes, long to prepare: as long
    // as some kilobytes of data.
    const int m_batchSize;
    ul::TBuffer<unsigned char> m_iv;
    // Both are wiped by hand: buffers that wipe themselves would do so in each call.
    ul::TBuffer<unsigned char> m_rest;
    ul::TBuffer<unsigned char> m_out;

private:
    static void wipe(ul::TBuffer<unsigned char>& buffer) {
        ul::wipe(buffer.getData(), static_cast<std::size_t>(buffer.getAllocated()));
    }

    bool givesTheSameInPieces() {
        const int half = 16 * m_blockSize; // long enough for key streams not to repeat by chance
        ul::TBuffer<unsigned char> zeros(2 * half, -1);
        std::fill_n(zeros.getData(), 2 * half, static_cast<unsigned char>(0));
        ul::TBuffer<unsigned char> atOnce;
        ul::TBuffer<unsigned char> inPieces;
        m_cipher->encryptWithoutPadding(m_key, zeros.getData(), 2 * half, atOnce, false, zeros.getData());
        m_cipher->encryptWithoutPadding(m_key, zeros.getData(), half, inPieces, false, zeros.getData());
        if (inPieces.getUsed() != half)
            return false;
        const ul::TBuffer<unsigned char> first(inPieces);
        const unsigned char* const nextIV = first.getData() + half - m_ivSize;
        m_cipher->encryptWithoutPadding(m_key, zeros.getData(), half, inPieces, true, nextIV);
        return ul::CBytes(atOnce) == inPieces;
    }

    bool m_isOpen = true;
};

/// Encrypts a stream: the results of update(), in order, and that of finish() are the very bytes that one
/// ICipher::encrypt() of all the data would give.
class CStreamEncryptor : public CCipherStream {
public:
    /// Draws a random IV, which comes ahead of the ciphertext.
    /// \throws as CCipherStream says; as CCipherManager::getCipher() does
    CStreamEncryptor(const ul::CText& id, const ul::TCryptBuffer<unsigned char>& key)
        : CStreamEncryptor(CCipherManager::get()->getCipher(id.get()), key) {}
    /// The same for any cipher.
    CStreamEncryptor(ul::P<ICipher> cipher, const ul::TCryptBuffer<unsigned char>& key)
        : CCipherStream("CStreamEncryptor", std::move(cipher), key), m_owesIV(true) {
        m_iv.setUsed(m_ivSize);
        ul::CMTRand::getGlobal()->randData(m_iv.getData(), m_ivSize);
    }
    /// Takes the caller's IV, which is not written.
    /// \throws ul::CInvalidArgError "invalid IV size"
    CStreamEncryptor(ul::P<ICipher> cipher, const ul::TCryptBuffer<unsigned char>& key, ul::CBytes iv)
        : CCipherStream("CStreamEncryptor", std::move(cipher), key) {
        setIV("CStreamEncryptor", iv);
    }

    /// Takes the next piece of plaintext, of any size, which must not be a result of this stream. Returns the next
    /// bytes of the result, valid until the next call; they may be none.
    /// \throws ul::CInvalidArgError "data is too large", after which the stream is as it was; as CCipherStream says
    ul::CBytes update(ul::CBytes piece) {
        int left = piece.getIntSize("CStreamEncryptor::update");
        const unsigned char* data = piece.data();
        begin("CStreamEncryptor::update", left);
        writeIV();
        if (m_rest.getUsed() > 0)
            moveFront(data, left, m_rest, m_batchSize);
        if (m_rest.getUsed() == m_batchSize) {
            encryptBlocks(m_rest.getData(), m_batchSize);
            m_rest.setUsed(0);
        }
        const int whole = left < m_batchSize ? 0 : left - left % m_blockSize;
        encryptBlocks(data, whole);
        m_rest.insert(m_rest.getUsed(), data + whole, left - whole);
        return end();
    }

    /// The last bytes of the result, padding included, valid as long as this object. The stream is closed then.
    ul::CBytes finish() {
        begin("CStreamEncryptor::finish", 0);
        writeIV();
        m_cipher->encrypt(m_key, m_rest.getData(), m_rest.getUsed(), m_out, true, m_iv.getData());
        return m_out;
    }

private:
    void writeIV() {
        if (std::exchange(m_owesIV, false))
            m_out.insert(0, m_iv.getData(), m_ivSize);
    }

    void encryptBlocks(const unsigned char* data, int size) {
        if (size == 0)
            return;
        m_cipher->encryptWithoutPadding(m_key, data, size, m_out, true, m_iv.getData());
        setNextIV(m_out.getData(), m_out.getUsed());
    }

    bool m_owesIV = false;
};

/// Decrypts a stream: the results of update(), in order, and that of finish() are the very bytes that one
/// ICipher::decrypt() of all the data would give, and its errors come from finish().
///
/// A stream that was cut inside a block, or whose end does not decrypt to padding, is such an error. One that was cut
/// between blocks is taken for whole about once in 256 times, and one that was changed may be: only a digest or a
/// signature proves that a stream is whole. Check one before anybody uses what came out.
class CStreamDecryptor : public CCipherStream {
public:
    /// Takes the IV from the front of the stream.
    /// \throws as CCipherStream says; as CCipherManager::getCipher() does
    CStreamDecryptor(const ul::CText& id, const ul::TCryptBuffer<unsigned char>& key)
        : CStreamDecryptor(CCipherManager::get()->getCipher(id.get()), key) {}
    /// The same for any cipher.
    CStreamDecryptor(ul::P<ICipher> cipher, const ul::TCryptBuffer<unsigned char>& key)
        : CCipherStream("CStreamDecryptor", std::move(cipher), key) {}
    /// Takes the caller's IV.
    /// \throws ul::CInvalidArgError "invalid IV size"
    CStreamDecryptor(ul::P<ICipher> cipher, const ul::TCryptBuffer<unsigned char>& key, ul::CBytes iv)
        : CCipherStream("CStreamDecryptor", std::move(cipher), key) {
        setIV("CStreamDecryptor", iv);
    }

    /// Takes the next piece of the stream, of any size, which must not be a result of this object. Returns the next
    /// bytes of the plaintext, valid until the next call; they may be none.
    /// \throws ul::CInvalidArgError "data is too large", after which the stream is as it was; as CCipherStream says
    ul::CBytes update(ul::CBytes piece) {
        int left = piece.getIntSize("CStreamDecryptor::update");
        const unsigned char* data = piece.data();
        begin("CStreamDecryptor::update", left);
        moveFront(data, left, m_iv, m_ivSize);
        if (m_rest.getUsed() > 0)
            moveFront(data, left, m_rest, m_batchSize);
        if (left > 0) {
            // The last block of all holds the padding, so one waits until there is another.
            decryptBlocks(m_rest.getData(), m_rest.getUsed());
            const int whole = left <= m_batchSize ? 0 : left - 1 - (left - 1) % m_blockSize;
            decryptBlocks(data, whole);
            m_rest.init(data + whole, left - whole);
        }
        return end();
    }

    /// The last bytes of the plaintext, valid as long as this object. The stream is closed then.
    /// \throws as ICipher::decrypt() does
    ul::CBytes finish() {
        begin("CStreamDecryptor::finish", 0);
        if (m_iv.getUsed() < m_ivSize)
            m_cipher->decrypt(m_key, m_iv.getData(), m_iv.getUsed(), m_out, false, nullptr);
        else
            m_cipher->decrypt(m_key, m_rest.getData(), m_rest.getUsed(), m_out, false, m_iv.getData());
        return m_out;
    }

private:
    void decryptBlocks(const unsigned char* data, int size) {
        if (size == 0)
            return;
        m_cipher->decryptWithoutPadding(m_key, data, size, m_out, true, m_iv.getData());
        setNextIV(data, size);
    }
};

} // namespace sarn
