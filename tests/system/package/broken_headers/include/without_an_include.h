// SPDX-License-Identifier: Apache-2.0
// Compiles only after somebody else's include of <string>.
#pragma once

std::string getName();
