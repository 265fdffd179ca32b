// SPDX-License-Identifier: Apache-2.0
/// \file
/// Decryption of data that need not fit into memory, piece by piece. Header-only.
#pragma once

#include "sarn/cipher_stream.h"

#include "ul/text.h"

#include <algorithm>
#include <utility>

namespace sarn {

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

    ~CStreamDecryptor() { wipeResult(); }

    /// Takes the next piece of the stream, of any size, which must not be a result of this object. Returns the next
    /// bytes of the plaintext, valid until the next call; they may be none.
    /// \throws ul::CInvalidArgError "data is too large", after which the stream is as it was; as CCipherStream says
    ul::CBytes update(ul::CBytes piece) {
        int left = piece.getIntSize("CStreamDecryptor::update");
        const unsigned char* data = piece.data();
        begin("CStreamDecryptor::update", left);
        readIV(data, left);
        if (m_waiting > 0)
            moveToRest(data, left);
        if (left > 0) {
            // The last block of all holds the padding, so one waits until there is another.
            decryptBlocks(m_rest.getData(), m_waiting);
            m_waiting = 0;
            const int whole = left <= m_batchSize ? 0 : left - 1 - (left - 1) % m_blockSize;
            decryptBlocks(data, whole);
            left -= whole;
            moveToRest(data += whole, left);
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
            m_cipher->decrypt(m_key, m_rest.getData(), m_waiting, m_out, false, m_iv.getData());
        return m_out;
    }

private:
    void readIV(const unsigned char*& data, int& left) {
        const int count = std::min(left, m_ivSize - m_iv.getUsed());
        m_iv.insert(m_iv.getUsed(), data, count);
        data += count;
        left -= count;
    }

    void decryptBlocks(const unsigned char* data, int size) {
        if (size == 0)
            return;
        m_cipher->decryptWithoutPadding(m_key, data, size, m_out, true, m_iv.getData());
        setNextIV(data, size);
    }
};

} // namespace sarn
