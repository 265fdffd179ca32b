// SPDX-License-Identifier: Apache-2.0
#include "frame/raise.h"

namespace sarn {

void raiseError(const ul::String& message, const ul::CProps& props) {
    throw ul::CError(message, "", -1, props, nullptr);
}

void raiseInvalidArg(const ul::String& where, const ul::String& message) {
    throw ul::CInvalidArgError(where, message, ul::CProps());
}

} // namespace sarn
