// SPDX-License-Identifier: Apache-2.0
/// \file
/// The whole library, with the base library on which it is built.
#pragma once

/// \namespace sarn
/// Cryptographic services for backup applications.

#include "sarn/cipher.h"
#include "sarn/digest.h"
#include "sarn/encoding.h"
#include "sarn/object_model.h"
#include "sarn/openssl_init.h"
#include "sarn/password_key_cache.h"
#include "sarn/signature.h"
#include "sarn/signed_config.h"
#include "sarn/version.h"

#include "ul/ul.h"
