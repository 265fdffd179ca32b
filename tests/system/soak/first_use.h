// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace sarn_soak {

/// In `count` new processes lets `threadCount` threads use every process-wide object at the same moment for the first
/// time. Throws if they did not all get the same ones, or a process fails or takes longer than ten seconds.
void runFirstUses(int count, int threadCount);

} // namespace sarn_soak
