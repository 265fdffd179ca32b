// SPDX-License-Identifier: Apache-2.0
/// \file
/// A configuration file that is trusted only when its signature verifies.
#pragma once

#include "sarn/object_model.h"

#include "ul/ini.h"
#include "ul/path.h"

namespace sarn {

/// Reports a configuration file whose signature does not match. The message is "Invalid signature for config file.";
/// the property "path" names the configuration file.
class SARN_EXPORT CSignedConfigSignatureError : public ul::CError {
public:
    /// \param path the configuration file
    explicit CSignedConfigSignatureError(const ul::TPathImpl<ul::CWindowsPathTraits>& path);
    CSignedConfigSignatureError(const CSignedConfigSignatureError&);
    CSignedConfigSignatureError& operator=(const CSignedConfigSignatureError&);
    ~CSignedConfigSignatureError() override;

    ul::P<ul::CError> clone() override;
    [[noreturn]] void throwClone() const override;
};

/// A configuration in INI form. Its signature is in the file of the same name plus ".sig". An object exists only for
/// verified bytes.
///
/// A key names a value as "/section/name". The first "/" is optional; the next one ends the section, and further ones
/// belong to the name. A key with no other "/" names a value of the section "/" or, if there is none, one before the
/// first section.
///
/// Copies share their content. Any number of threads may read at once while none sets a value.
class SARN_EXPORT CSignedConfig : public ul::CBase {
public:
    /// Verifies the file (RSA or DSA over SHA-1), reads it, and verifies the bytes that were read before parsing them:
    /// a file that is replaced in between is refused.
    ///
    /// \param publicKey     PEM text of the public key
    /// \param base64Encoded whether the file contains the INI text in Base64; the signature covers the bytes on disk
    /// \throws CSignedConfigSignatureError; ul::CFileError if either file cannot be read; ul::CBadPathError; ul::CError
    ///         as verifyFileSignature_RSA_SHA1(), base64Decode() and ul::CINIContent do.
    CSignedConfig(ul::TPathImpl<ul::CWindowsPathTraits> path, const ul::String& publicKey, bool base64Encoded);
    CSignedConfig(const CSignedConfig&);
    CSignedConfig& operator=(const CSignedConfig&);
    ~CSignedConfig() override;

    /// The value of a key. On a const object use the overload below.
    /// \throws ul::CError "Required config value '<key>' not found.".
    ul::String getValue(const ul::String& key);
    /// Stores the value of a key in `value`. If there is none, returns false and leaves `value` unchanged.
    bool getValue(const ul::String& key, ul::String& value) const;

    /// Appends the keys of all values that start with `prefix` to `names`, as "/section/name" and in file order.
    void getValueNamesWithPrefix(ul::TArray<ul::String>& names, const ul::String& prefix) const;

    /// Sets a value in memory. The file is never written.
    void setValueNonPersistent(const ul::String& key, const ul::String& value);

protected:
    /// Splits a key into section and name.
    static void splitKey(const ul::String& key, ul::String& section, ul::String& name);

private:
    ul::P<ul::CINIContent> m_ini;
};

} // namespace sarn
