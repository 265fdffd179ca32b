// SPDX-License-Identifier: Apache-2.0
// Takes a host to libcrypto's headers through one of its own.
#pragma once

#include "on_the_way.h"
