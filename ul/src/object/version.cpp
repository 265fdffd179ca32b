// SPDX-License-Identifier: Apache-2.0
#include "ul/version.h"

namespace ul {

int getVersion() noexcept {
    return UL_VERSION;
}

const char* getVersionText() noexcept {
    return UL_VERSION_TEXT;
}

} // namespace ul
