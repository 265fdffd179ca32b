// SPDX-License-Identifier: Apache-2.0
#include "sarn/digest_support.h"

#include "frame/raise.h"

namespace sarn::detail {

void raiseDigestIsFinished() {
    throw ul::CBadStateError("IDigest::update cannot be called after finish has been called.");
}

void raiseDigestIsNotFinished() {
    throw ul::CBadStateError("IDigest::finish has not been called yet.");
}

void raiseDigestError(const char* message) {
    raiseError(message);
}

void raiseBadDigestDataSize(const char* where) {
    raiseInvalidArg(where, "invalid data size");
}

} // namespace sarn::detail
