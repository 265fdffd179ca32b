// SPDX-License-Identifier: Apache-2.0
// The rows of each family. Each function measures the selected ones. verdict.py has the goal of every row.
#pragma once

namespace bench {

void compareCiphers();
void compareStreams();
void compareDigests();
void compareKeys();
void compareBase64();
void compareSignatures();
void compareLookUps();

} // namespace bench
