// SPDX-License-Identifier: Apache-2.0
/// \file
/// Errors, all thrown by value.
#pragma once

#include "ul/base.h"
#include "ul/pointer.h"
#include "ul/props.h"
#include "ul/string.h"

#include <cstdint>
#include <exception>
#include <string>

namespace ul {

/// Base of every error. It can be caught as std::exception, CBase or IBase too.
class UL_EXPORT CError : public std::exception, public CBase {
public:
    /// \param message what failed, as an English sentence
    /// \param text    a second text for the user; may be empty
    /// \param code    a number for programs; -1 means none
    /// \param props   named values that belong to the message
    /// \param cause   the error that led to this one, which is copied; may be null
    CError(const String& message, const String& text, std::int64_t code, const CProps& props, const CError* cause);
    CError(const CError&) = default;
    /// Copies the other error, which may be a cause of this one.
    CError& operator=(const CError& other);
    ~CError() override;

    /// The message as UTF-8, with '?' for what UTF-8 cannot express, up to its first null character. Valid as long as
    /// this error.
    const char* what() const noexcept override { return m_what.c_str(); }

    /// What failed.
    const String& getMessage() const noexcept { return m_message; }
    /// The second text, for the user; empty if there is none.
    const String& getText() const noexcept { return m_text; }
    /// The number for programs; -1 if there is none.
    std::int64_t getCode() const noexcept { return m_code; }
    /// Named values that belong to the message.
    const CProps& getProps() const noexcept { return m_props; }
    /// The error that led to this one, or null. Valid as long as this error.
    const CError* getCause() const noexcept { return m_cause.get(); }

    /// Copies this error, with its type, to the heap, so that it can be kept and raised later.
    virtual P<CError> clone();
    /// Raises a copy of this error, with its type.
    [[noreturn]] virtual void throwClone() const;

private:
    String m_message;
    String m_text;
    std::int64_t m_code;
    CProps m_props;
    P<CError> m_cause;
    std::string m_what;
};

/// Reports that an operation refused one of its arguments.
class UL_EXPORT CInvalidArgError : public CError {
public:
    /// \param where   qualified name of the operation, for example "COpenSSLCipher::decrypt"
    /// \param message what is wrong, in lower case without a full stop
    CInvalidArgError(const String& where, const String& message, const CProps& props);
    CInvalidArgError(const CInvalidArgError&) = default;
    CInvalidArgError& operator=(const CInvalidArgError& other);
    ~CInvalidArgError() override;

    /// Qualified name of the operation that refused the argument.
    const String& getWhere() const noexcept { return m_where; }

    P<CError> clone() override;
    [[noreturn]] void throwClone() const override;

private:
    String m_where;
};

/// Reports a call in the wrong state of its object.
class UL_EXPORT CBadStateError : public CError {
public:
    /// \param message what was called too early or too late, as an English sentence
    explicit CBadStateError(const String& message);
    CBadStateError(const CBadStateError&) = default;
    CBadStateError& operator=(const CBadStateError&) = default;
    ~CBadStateError() override;

    P<CError> clone() override;
    [[noreturn]] void throwClone() const override;
};

/// Reports a text that cannot become a path. The message is "Invalid path: " followed by the text.
class UL_EXPORT CBadPathError : public CError {
public:
    /// \param path the text as it was given
    explicit CBadPathError(const String& path);
    CBadPathError(const CBadPathError&) = default;
    CBadPathError& operator=(const CBadPathError&) = default;
    ~CBadPathError() override;

    P<CError> clone() override;
    [[noreturn]] void throwClone() const override;
};

/// Reports a failed operation on a file.
///
/// The message names the operation, the file and the reason that the operating system gave. The properties are "path"
/// and "reason". The code is the operating system's error number, or -1 if the operating system was not involved.
class UL_EXPORT CFileError : public CError {
public:
    /// \param operation what was attempted, for example "open file"
    /// \param path      the file as the caller named it
    /// \param reason    why it failed, without a full stop; the operating system's text for `code` if there is one
    CFileError(const String& operation, const String& path, const String& reason, std::int64_t code);
    CFileError(const CFileError&) = default;
    CFileError& operator=(const CFileError&) = default;
    ~CFileError() override;

    P<CError> clone() override;
    [[noreturn]] void throwClone() const override;
};

} // namespace ul
