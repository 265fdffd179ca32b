// SPDX-License-Identifier: Apache-2.0
/// \file
/// Decryption of data of any size, piece by piece. Header-only.
#pragma once

#include "sarn/cipher_stream.h"

#include "ul/text.h"

#include <algorithm>
#include <utility>

namespace sarn {

/// Decrypts a stream. The results of update(), in order, and of finish() are exactly the bytes that one
/// ICipher::decrypt() of all the data would return; finish() raises the errors that it would raise.
///
/// A stream that was cut within a block, or whose end does not decrypt to valid padding, is such an error. A stream
/// that was cut between blocks passes about once in 256 times, and a modified one may pass: only a digest or a
/// signature proves that a stream is intact. Check one before you use the plaintext.
class CStreamDecryptor : public CCipherStream {
public:
    /// Decrypts a stream that starts with its IV.
    /// \throws as CCipherStream says; as CCipherManager::getCipher() does.
    CStreamDecryptor(const ul::CText& id, const ul::TCryptBuffer<unsigned char>& key)
        : CStreamDecryptor(CCipherManager::get()->getCipher(id.get()), key) {}
    /// Decrypts with any cipher a stream that starts with its IV.
    /// \throws as CCipherStream says.
    CStreamDecryptor(ul::P<ICipher> cipher, const ul::TCryptBuffer<unsigned char>& key)
        : CCipherStream("CStreamDecryptor", std::move(cipher), key) {}
    /// Decrypts with the given IV.
    /// \throws ul::CInvalidArgError "invalid IV size"; as CCipherStream says.
    CStreamDecryptor(ul::P<ICipher> cipher, const ul::TCryptBuffer<unsigned char>& key, ul::CBytes iv)
        : CCipherStream("CStreamDecryptor", std::move(cipher), key) {
        setIV("CStreamDecryptor", iv);
    }

    ~CStreamDecryptor() { wipeResult(); }

    /// Processes the next piece of the stream, of any size. Returns the next bytes of the plaintext, possibly none;
    /// they are valid until the next call. Requires: `piece` is not a result of this object.
    /// \throws ul::CInvalidArgError "data is too large", which leaves the stream unchanged; as CCipherStream says.
    ul::CBytes update(ul::CBytes piece) {
        int left = piece.getIntSize("CStreamDecryptor::update");
        const unsigned char* data = piece.data();
        begin("CStreamDecryptor::update", left);
        readIV(data, left);
        if (m_waiting > 0)
            moveToRest(data, left);
        if (left > 0) {
            // The last block of the stream has the padding, so one is kept back until another arrives.
            decryptBlocks(m_rest.getData(), m_waiting);
            m_waiting = 0;
            const int whole = left <= m_batchSize ? 0 : left - 1 - (left - 1) % m_blockSize;
            decryptBlocks(data, whole);
            left -= whole;
            moveToRest(data += whole, left);
        }
        return end();
    }

    /// Returns the last bytes of the plaintext and ends the stream. They are valid as long as this object.
    /// \throws as ICipher::decrypt() does.
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
