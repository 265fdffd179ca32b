// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace sarn_soak {

/// `count` times starts a new process whose main returns while four detached threads encrypt under random
/// initialisation vectors. Throws unless each ends as if nothing else ran, within ten seconds.
void runEnds(int count);

} // namespace sarn_soak
