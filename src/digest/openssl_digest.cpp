// SPDX-License-Identifier: Apache-2.0
#include "sarn/openssl_digest.h"

#include "frame/raise.h"

namespace sarn {

namespace {

constexpr int stateVersion = 1;

// The version that the first saved states carry. The contexts are the same in every libcrypto from 1.1.0 on, so it is
// written whichever one this is built against, and every build reads what any other wrote.
constexpr int opensslVersion = 0x1010102F;

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

namespace detail {

void storeOpenSSLDigestHeader(ul::CDataOutStream& stream, int digestSize, int contextSize) {
    stream.writeInt32(stateVersion).writeInt32(opensslVersion).writeInt32(digestSize).writeInt32(contextSize);
}

void checkOpenSSLDigestHeader(ul::CDataInStream& stream, int digestSize, int contextSize) {
    if (stream.readInt32() != stateVersion)
        raiseError("Unsupported OpenSSL digest state data version.");
    if (const int actual = stream.readInt32(); actual != opensslVersion)
        throw COpenSSLVersionMismatchError("digest state data", actual, opensslVersion);
    if (stream.readInt32() != digestSize)
        raiseError("Bad OpenSSL digest size in state stream.");
    if (stream.readInt32() != contextSize)
        raiseError("Bad OpenSSL digest context size in state stream.");
}

} // namespace detail

} // namespace sarn
