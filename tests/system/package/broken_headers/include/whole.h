// SPDX-License-Identifier: Apache-2.0
// A header that compiles by itself.
#pragma once

#include <string>

std::string getName();
