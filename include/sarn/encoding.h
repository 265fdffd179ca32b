// SPDX-License-Identifier: Apache-2.0
/// \file
/// Base64, HMAC and key derivation in one header.
#pragma once

#include "sarn/base64.h"
#include "sarn/hmac.h"
#include "sarn/key_derivation.h"
