// SPDX-License-Identifier: Apache-2.0
/// \file
/// Block ciphers in CBC mode, selected by identifier.
#pragma once

#include "sarn/cipher_interface.h"
#include "sarn/cipher_manager.h"
#include "sarn/null_cipher.h"
#include "sarn/openssl_cipher.h"
