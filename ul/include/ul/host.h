// SPDX-License-Identifier: Apache-2.0
/// \file
/// The base library and the header-only short forms for hosts.
#pragma once

#include "ul/bytes.h"
#include "ul/format_error.h"
#include "ul/hex.h"
#include "ul/random_bytes.h"
#include "ul/secret_text.h"
#include "ul/text.h"
#include "ul/ul.h"
