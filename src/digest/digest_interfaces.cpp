// SPDX-License-Identifier: Apache-2.0
#include "sarn/digest_interfaces.h"

namespace sarn {

IDigestType::IDigestType() = default;
IDigestType::IDigestType(const IDigestType&) = default;
IDigestType::IDigestType(IDigestType&&) noexcept = default;
IDigestType& IDigestType::operator=(const IDigestType&) = default;
IDigestType& IDigestType::operator=(IDigestType&&) noexcept = default;
IDigestType::~IDigestType() = default;

IDigest::IDigest() = default;
IDigest::IDigest(const IDigest&) = default;
IDigest::IDigest(IDigest&&) noexcept = default;
IDigest& IDigest::operator=(const IDigest&) = default;
IDigest& IDigest::operator=(IDigest&&) noexcept = default;
IDigest::~IDigest() = default;

} // namespace sarn
