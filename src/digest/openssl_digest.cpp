// SPDX-License-Identifier: Apache-2.0
#include "sarn/openssl_digest.h"

namespace sarn {

namespace {

ul::String toVersionText(int version) {
    return "0x" + ul::toHexString(version);
}

} // namespace

COpenSSLVersionMismatchError::COpenSSLVersionMismatchError(const ul::String& object, int actualVersion,
                                                           int expectedVersion)
    : ul::CError("OpenSSL version mismatch", "", -1,
                 ul::CProps()
                     .add("object", object)
                     .add("actualVersion", toVersionText(actualVersion))
                     .add("expectedVersion", toVersionText(expectedVersion)),
                 nullptr) {}

COpenSSLVersionMismatchError::COpenSSLVersionMismatchError(const COpenSSLVersionMismatchError&) = default;
COpenSSLVersionMismatchError& COpenSSLVersionMismatchError::operator=(const COpenSSLVersionMismatchError&) = default;
COpenSSLVersionMismatchError::~COpenSSLVersionMismatchError() = default;

ul::P<ul::CError> COpenSSLVersionMismatchError::clone() {
    return ul::make<COpenSSLVersionMismatchError>(*this);
}

void COpenSSLVersionMismatchError::throwClone() const {
    throw COpenSSLVersionMismatchError(*this);
}

} // namespace sarn
