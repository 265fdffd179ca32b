// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace sarn_soak {

/// Forks `count` times at random moments while threads use all that is shared. Each child draws random bytes and ends
/// within ten seconds. Returns how many initialisation vectors and draws of that size there were in all; throws if one
/// came twice or a child failed.
std::size_t runForks(int count);

} // namespace sarn_soak
