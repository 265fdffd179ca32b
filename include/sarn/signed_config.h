// SPDX-License-Identifier: Apache-2.0
/// \file
/// A configuration file that is trusted only when its signature verifies.
#pragma once

#include "sarn/object_model.h"

#include "ul/ini.h"
#include "ul/path.h"

namespace sarn {

/// The signature of a configuration file is not one of the file. The message is "Invalid signature for config file.",
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

/// A configuration in INI form, read from a file whose signature lies beside it under the same name with ".sig"
/// appended. An object exists only for bytes that were verified.
///
/// A key names a value as "/section/name". The first "/" may be left out; the next one ends the section, and further
/// ones belong to the name. A key without one names a value of the section called "/", or one before the first section.
///
/// Copies share their content. Reading from several threads is safe while none sets a value.
class SARN_EXPORT CSignedConfig : public ul::CBase {
public:
    /// Verifies the file (RSA or DSA over SHA-1), then reads it and verifies what was read once more before it is
    /// parsed: a file that was exchanged meanwhile is refused.
    ///
    /// \param publicKey     PEM text of the public key
    /// \param base64Encoded whether the file holds Base64 text of the INI text; it is the file as it lies on the disk
    ///                      that is signed
    /// \throws CSignedConfigSignatureError; ul::CFileError if either file cannot be read; ul::CBadPathError; ul::CError
    ///         as verifyFileSignature_RSA_SHA1(), base64Decode() and ul::CINIContent do
    CSignedConfig(ul::TPathImpl<ul::CWindowsPathTraits> path, const ul::String& publicKey, bool base64Encoded);
    CSignedConfig(const CSignedConfig&);
    CSignedConfig& operator=(const CSignedConfig&);
    ~CSignedConfig() override;

    /// The value of a key. A constant object is asked by the other function of this name.
    /// \throws ul::CError "Required config value '<key>' not found."
    ul::String getValue(const ul::String& key);
    /// Puts the value of a key into `value`; returns false and leaves it alone if there is none.
    bool getValue(const ul::String& key, ul::String& value) const;

    /// Appends the keys of all values that start with `prefix`, in the form "/section/name" and the order of the file.
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
