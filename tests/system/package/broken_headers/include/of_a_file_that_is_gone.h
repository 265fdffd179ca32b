// SPDX-License-Identifier: Apache-2.0
// Includes what does not exist.
#pragma once

#include "moved_away.h"
