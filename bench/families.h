// SPDX-License-Identifier: Apache-2.0
// The comparisons of each family.
#pragma once

namespace bench {

void registerCiphers();
void registerDigests();
void registerKeys();
void registerSignatures();

} // namespace bench
