// SPDX-License-Identifier: Apache-2.0
// Another reader of INI text beside ours.
#pragma once

#include "ul/ini.h"

#include <string>

namespace sarn_fuzz {

/// Requires that inih reads the same values from a text that was parsed to `content`, if it has the same rules for each
/// line of the text.
void compareWithInih(const std::string& text, const ul::CINIContent& content);

} // namespace sarn_fuzz
