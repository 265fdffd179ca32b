// SPDX-License-Identifier: Apache-2.0
#include "sarn/cipher_interface.h"

namespace sarn {

ICipher::ICipher() = default;
ICipher::ICipher(const ICipher&) = default;
ICipher::ICipher(ICipher&&) noexcept = default;
ICipher& ICipher::operator=(const ICipher&) = default;
ICipher& ICipher::operator=(ICipher&&) noexcept = default;
ICipher::~ICipher() = default;

} // namespace sarn
