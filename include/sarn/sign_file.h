// SPDX-License-Identifier: Apache-2.0
/// \file
/// Signatures with encrypted private keys. Header-only.
#pragma once

#include "sarn/signature.h"

#include "ul/file.h"

#include <cstdint>

namespace sarn {

/// Checks a passphrase and returns it. ISignatureAlgo::beginSign() takes Latin-1: it would read '?' for any other
/// character and stop at a null character, and then report a corrupted key although the passphrase was never tried.
/// \throws ul::CInvalidArgError "pass phrase has a character outside Latin-1", "pass phrase has a null character".
inline const ul::String& checkPassPhrase(const ul::String& passPhrase) {
    for (const wchar_t character : passPhrase.toStdWString()) {
        if (character == L'\0')
            throw ul::CInvalidArgError("checkPassPhrase", "pass phrase has a null character", ul::CProps());
        if (static_cast<std::uint32_t>(character) > 0xFF)
            throw ul::CInvalidArgError("checkPassPhrase", "pass phrase has a character outside Latin-1", ul::CProps());
    }
    return passPhrase;
}

/// Signs a file with an encrypted private key, RSA or DSA over SHA-1. createFileSignature_RSA_SHA1() does so with an
/// unencrypted one.
/// \throws ul::CFileError; as checkPassPhrase(), ISignatureAlgo::beginSign() and ISigner do.
inline ul::TBuffer<unsigned char> signFile(const ul::CWindowsPath& path, const ul::String& privateKey,
                                           const ul::String& passPhrase) {
    constexpr int pieceSize = 65536;
    const ul::P<ISigner> signer = createRSA_SHA1()->beginSign(privateKey, checkPassPhrase(passPhrase));
    ul::CWindowsFileInStream file(path);
    ul::TBuffer<unsigned char> piece(pieceSize, -1);
    while (const int size = file.readLax(piece.getData(), pieceSize))
        signer->update(piece.getData(), size);
    ul::TBuffer<unsigned char> signature;
    signer->finish(signature);
    return signature;
}

} // namespace sarn
