// SPDX-License-Identifier: Apache-2.0
#include "sarn/digest_interfaces.h"

namespace sarn {

IDigestType::~IDigestType() = default;
IDigest::~IDigest() = default;

} // namespace sarn
