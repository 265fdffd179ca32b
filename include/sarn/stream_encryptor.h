// SPDX-License-Identifier: Apache-2.0
/// \file
/// Encryption of data that need not fit into memory, piece by piece. Header-only.
#pragma once

#include "sarn/cipher_stream.h"

#include "ul/random.h"
#include "ul/text.h"

#include <utility>

namespace sarn {

/// Encrypts a stream: the results of update(), in order, and that of finish() are the very bytes that one
/// ICipher::encrypt() of all the data would give.
class CStreamEncryptor : public CCipherStream {
public:
    /// Draws a random IV, which comes before the ciphertext.
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
        if (m_waiting > 0)
            moveToRest(data, left);
        if (m_waiting == m_batchSize) {
            encryptBlocks(m_rest.getData(), m_batchSize);
            m_waiting = 0;
        }
        const int whole = left < m_batchSize ? 0 : left - left % m_blockSize;
        encryptBlocks(data, whole);
        left -= whole;
        moveToRest(data += whole, left);
        return end();
    }

    /// The last bytes of the result, padding included, valid as long as this object. The stream is closed then.
    ul::CBytes finish() {
        begin("CStreamEncryptor::finish", 0);
        writeIV();
        m_cipher->encrypt(m_key, m_rest.getData(), m_waiting, m_out, true, m_iv.getData());
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

} // namespace sarn
