// SPDX-License-Identifier: Apache-2.0
/// \file
/// Encryption of data of any size, piece by piece. Header-only.
#pragma once

#include "sarn/cipher_stream.h"

#include "ul/random.h"
#include "ul/text.h"

#include <utility>

namespace sarn {

/// Encrypts a stream. The results of update(), in order, and of finish() are exactly the bytes that one
/// ICipher::encrypt() of all the data would return.
class CStreamEncryptor : public CCipherStream {
public:
    /// Draws a random IV, which precedes the ciphertext.
    /// \throws as CCipherStream says; as CCipherManager::getCipher() does.
    CStreamEncryptor(const ul::CText& id, const ul::TCryptBuffer<unsigned char>& key)
        : CStreamEncryptor(CCipherManager::get()->getCipher(id.get()), key) {}
    /// Encrypts with any cipher and a random IV, which precedes the ciphertext.
    /// \throws as CCipherStream says.
    CStreamEncryptor(ul::P<ICipher> cipher, const ul::TCryptBuffer<unsigned char>& key)
        : CCipherStream("CStreamEncryptor", std::move(cipher), key), m_owesIV(true) {
        m_tail.setUsed(m_ivSize);
        ul::CMTRand::getGlobal()->randData(m_tail.getData(), m_ivSize);
    }
    /// Encrypts with the given IV, which is not written.
    /// \throws ul::CInvalidArgError "invalid IV size"; as CCipherStream says.
    CStreamEncryptor(ul::P<ICipher> cipher, const ul::TCryptBuffer<unsigned char>& key, ul::CBytes iv)
        : CCipherStream("CStreamEncryptor", std::move(cipher), key) {
        setIV("CStreamEncryptor", iv);
    }

    /// Processes the next piece of plaintext, of any size. Returns the next bytes of the result, possibly none; they
    /// are valid until the next call. Requires: `piece` is not a result of this object.
    /// \throws ul::CInvalidArgError "data is too large", which leaves the stream unchanged; as CCipherStream says.
    ul::CBytes update(ul::CBytes piece) {
        const int size = piece.getIntSize("CStreamEncryptor::update");
        begin("CStreamEncryptor::update", size);
        writeIV();
        processBatch(piece.data(), size, [this](const unsigned char* data, int count) {
            m_cipher->encryptWithoutPadding(m_key, data, count, m_out, true, getIV());
            m_tail.init(m_out.getData() + m_out.getUsed() - m_ivSize, m_ivSize);
        });
        return end();
    }

    /// Returns the last bytes of the result, padding included, and ends the stream. They are valid as long as this
    /// object.
    /// \throws as ICipher::encrypt() does.
    ul::CBytes finish() {
        begin("CStreamEncryptor::finish", 0);
        writeIV();
        m_cipher->encrypt(m_key, m_rest.getData(), m_waiting, m_out, true, getIV());
        return m_out;
    }

private:
    void writeIV() {
        if (std::exchange(m_owesIV, false))
            m_out.insert(0, getIV(), m_ivSize);
    }

    bool m_owesIV = false;
};

} // namespace sarn
