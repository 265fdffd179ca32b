// SPDX-License-Identifier: Apache-2.0
/// \file
/// The whole library.
#pragma once

#include "sarn/cipher.h"
#include "sarn/object_model.h"
#include "sarn/openssl_init.h"
