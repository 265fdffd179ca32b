// SPDX-License-Identifier: Apache-2.0
#include "ul/error.h"

#include "text/utf8_text.h"

#include <utility>

namespace ul {

namespace {

// clone() does not change the error but is not const, in any error class.
P<CError> cloneCause(const CError* cause) {
    return cause ? const_cast<CError*>(cause)->clone() : nullptr;
}

} // namespace

CError::CError(const String& message, const String& text, std::int64_t code, const CProps& props, const CError* cause)
    : m_message(message),
      m_text(text),
      m_code(code),
      m_props(props),
      m_cause(cloneCause(cause)),
      m_what(encodeUTF8Lossy(message)) {}

CError& CError::operator=(const CError& other) {
    // They last until the other error, which may be one of them, has been copied.
    const P<CError> causes = m_cause;
    m_message = other.m_message;
    m_text = other.m_text;
    m_code = other.m_code;
    m_props = other.m_props;
    m_cause = other.m_cause;
    m_what = other.m_what;
    return *this;
}

CError::~CError() {
    // Released one by one: recursive destructors of a long chain would exhaust the stack.
    P<CError> cause = std::move(m_cause);
    while (cause && !cause->isShared()) {
        P<CError> next = std::move(cause->m_cause);
        cause = std::move(next);
    }
}

P<CError> CError::clone() {
    return make<CError>(*this);
}

void CError::throwClone() const {
    throw CError(*this);
}

CInvalidArgError::CInvalidArgError(const String& where, const String& message, const CProps& props)
    : CError(message, "", -1, props, nullptr), m_where(where) {}

CInvalidArgError& CInvalidArgError::operator=(const CInvalidArgError& other) {
    m_where = other.m_where; // first, because the other error may be a cause of this one
    CError::operator=(other);
    return *this;
}

CInvalidArgError::~CInvalidArgError() = default;

P<CError> CInvalidArgError::clone() {
    return make<CInvalidArgError>(*this);
}

void CInvalidArgError::throwClone() const {
    throw CInvalidArgError(*this);
}

CBadStateError::CBadStateError(const String& message) : CError(message, "", -1, CProps(), nullptr) {}

CBadStateError::~CBadStateError() = default;

P<CError> CBadStateError::clone() {
    return make<CBadStateError>(*this);
}

void CBadStateError::throwClone() const {
    throw CBadStateError(*this);
}

CBadPathError::CBadPathError(const String& path) : CError("Invalid path: " + path, "", -1, CProps(), nullptr) {}

CBadPathError::~CBadPathError() = default;

P<CError> CBadPathError::clone() {
    return make<CBadPathError>(*this);
}

void CBadPathError::throwClone() const {
    throw CBadPathError(*this);
}

CFileError::CFileError(const String& operation, const String& path, const String& reason, std::int64_t code)
    : CError("Cannot " + operation + " '" + path + "': " + reason + ".", "", code,
             CProps().add("path", path).add("reason", reason), nullptr) {}

CFileError::~CFileError() = default;

P<CError> CFileError::clone() {
    return make<CFileError>(*this);
}

void CFileError::throwClone() const {
    throw CFileError(*this);
}

} // namespace ul
