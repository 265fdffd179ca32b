// SPDX-License-Identifier: Apache-2.0
#include "raise.h"

namespace ul {

void raiseError(const String& message, const CProps& props) {
    throw CError(message, "", -1, props, nullptr);
}

void raiseInvalidArg(const String& where, const String& message) {
    throw CInvalidArgError(where, message, CProps());
}

} // namespace ul
