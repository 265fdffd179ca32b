// SPDX-License-Identifier: Apache-2.0
/// \file
/// Signatures by keys that are kept encrypted. Header-only.
#pragma once

#include "sarn/signature.h"

#include "ul/file.h"

#include <cstdint>

namespace sarn {

/// Returns the pass phrase if it can be one. ISignatureAlgo::beginSign() takes Latin-1, reads '?' for every other
/// character and ends at a null character, so that a key would be called corrupted whose pass phrase was never tried.
/// \throws ul::CInvalidArgError "pass phrase has a character outside Latin-1", "pass phrase has a null character"
inline const ul::String& checkPassPhrase(const ul::String& passPhrase) {
    for (const wchar_t character : passPhrase.toStdWString()) {
        if (character == L'\0')
            throw ul::CInvalidArgError("checkPassPhrase", "pass phrase has a null character", ul::CProps());
        if (static_cast<std::uint32_t>(character) > 0xFF)
            throw ul::CInvalidArgError("checkPassPhrase", "pass phrase has a character outside Latin-1", ul::CProps());
    }
    return passPhrase;
}

/// The signature of a file by an encrypted private key, RSA or DSA over SHA-1: what createFileSignature_RSA_SHA1() does
/// for keys that are not.
/// \throws ul::CFileError; as checkPassPhrase(), ISignatureAlgo::beginSign() and ISigner do
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
