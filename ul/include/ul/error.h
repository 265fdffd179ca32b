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

/// Base of every error. Also caught as std::exception, CBase and IBase.
class UL_EXPORT CError : public std::exception, public CBase {
public:
    /// \param message what failed, an English sentence
    /// \param text    a second text for the person at the screen; may be empty
    /// \param code    a number for programs; -1 means none
    /// \param props   named values of the message
    /// \param cause   the error that led to this one, of which a copy is kept; may be null
    CError(const String& message, const String& text, std::int64_t code, const CProps& props, const CError* cause);
    CError(const CError&) = default;
    CError& operator=(const CError&) = default;
    ~CError() override;

    /// The message as UTF-8, with '?' for what UTF-8 cannot express. Valid as long as the error.
    const char* what() const noexcept override { return m_what.c_str(); }

    /// What failed.
    const String& getMessage() const noexcept { return m_message; }
    /// The second text, for the person at the screen; empty if there is none.
    const String& getText() const noexcept { return m_text; }
    /// The number for programs; -1 if there is none.
    std::int64_t getCode() const noexcept { return m_code; }
    /// Named values of the message.
    const CProps& getProps() const noexcept { return m_props; }
    /// The error that led to this one, or null. Valid as long as this error.
    const CError* getCause() const noexcept { return m_cause.get(); }

    /// A copy on the heap, of the same type, to be kept and thrown later.
    virtual P<CError> clone();
    /// Throws a copy of this error, of the same type.
    [[noreturn]] virtual void throwClone() const;

private:
    String m_message;
    String m_text;
    std::int64_t m_code;
    CProps m_props;
    P<CError> m_cause;
    std::string m_what;
};

/// An operation refused one of its arguments.
class UL_EXPORT CInvalidArgError : public CError {
public:
    /// \param where   qualified name of the operation, for example "COpenSSLCipher::decrypt"
    /// \param message what is wrong, in lower case without a full stop
    CInvalidArgError(const String& where, const String& message, const CProps& props);
    CInvalidArgError(const CInvalidArgError&) = default;
    CInvalidArgError& operator=(const CInvalidArgError&) = default;
    ~CInvalidArgError() override;

    /// Qualified name of the operation that refused the argument.
    const String& getWhere() const noexcept { return m_where; }

    P<CError> clone() override;
    [[noreturn]] void throwClone() const override;

private:
    String m_where;
};

/// An operation was called in the wrong state of its object.
class UL_EXPORT CBadStateError : public CError {
public:
    /// \param message what was called too early or too late, an English sentence
    explicit CBadStateError(const String& message);
    CBadStateError(const CBadStateError&) = default;
    CBadStateError& operator=(const CBadStateError&) = default;
    ~CBadStateError() override;

    P<CError> clone() override;
    [[noreturn]] void throwClone() const override;
};

/// A text cannot become a path. The message is "Invalid path: " followed by the text.
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

/// An operation on a file failed.
///
/// The message names the operation, the file and the reason the operating system gave; the properties are "path" and
/// "reason"; the code is the operating system's error number, -1 if it was not asked.
class UL_EXPORT CFileError : public CError {
public:
    /// \param operation what was tried, for example "open file"
    /// \param path      the file as the caller named it
    /// \param reason    why, without a full stop; the operating system's text for `code` if it was asked
    CFileError(const String& operation, const String& path, const String& reason, std::int64_t code);
    CFileError(const CFileError&) = default;
    CFileError& operator=(const CFileError&) = default;
    ~CFileError() override;

    P<CError> clone() override;
    [[noreturn]] void throwClone() const override;
};

} // namespace ul
