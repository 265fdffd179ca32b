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
        m_out.insert(0, m_held.getData(), m_held.getUsed());
        processBatch(data, left, [this](const unsigned char* blocks, int size) {
            m_cipher->decryptWithoutPadding(m_key, blocks, size, m_out, true, getIV());
            keepTail(blocks, size);
        });
        // Until more bytes arrive, the last block may be the one that has the padding.
        const int result = std::max(m_out.getUsed() - m_blockSize, 0);
        m_held.init(m_out.getData() + result, m_out.getUsed() - result);
        m_out.setUsed(result);
        return end();
    }

    /// Returns the last bytes of the plaintext and ends the stream. They are valid as long as this object.
    /// \throws as ICipher::decrypt() does.
    ul::CBytes finish() {
        begin("CStreamDecryptor::finish", 0);
        if (m_tail.getUsed() < m_ivSize) {
            m_cipher->decrypt(m_key, m_tail.getData(), m_tail.getUsed(), m_out, false, nullptr);
        } else if (m_waiting == 0 && m_held.getUsed() > 0) {
            // Decrypts the held block again, and removes its padding.
            m_cipher->decrypt(m_key, m_tail.getData() + m_ivSize, m_blockSize, m_out, false, m_tail.getData());
        } else {
            m_out.insert(0, m_held.getData(), m_held.getUsed());
            m_cipher->decrypt(m_key, m_rest.getData(), m_waiting, m_out, true, getIV());
        }
        return m_out;
    }

private:
    void readIV(const unsigned char*& data, int& left) {
        const int count = std::clamp(m_ivSize - m_tail.getUsed(), 0, left);
        m_tail.insert(m_tail.getUsed(), data, count);
        data += count;
        left -= count;
    }

    /// Keeps the last block of the ciphertext and the IV under which it was encrypted.
    void keepTail(const unsigned char* blocks, int size) {
        if (size > m_blockSize) {
            const int kept = m_ivSize + m_blockSize;
            m_tail.init(blocks + size - kept, kept);
        } else {
            m_tail.init(getIV(), m_ivSize);
            m_tail.insert(m_ivSize, blocks, m_blockSize);
        }
    }

    /// The last block of the plaintext so far, if there is one.
    ul::TCryptBuffer<unsigned char> m_held;
};

} // namespace sarn
