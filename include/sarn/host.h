// SPDX-License-Identifier: Apache-2.0
/// \file
/// The whole library and the header-only short forms for hosts. The short forms call documented operations only;
/// docs/host.md shows both side by side.
#pragma once

#include "sarn/config_values.h"
#include "sarn/digest_file.h"
#include "sarn/one_call.h"
#include "sarn/sarn.h"
#include "sarn/sign_file.h"
#include "sarn/stream_decryptor.h"
#include "sarn/stream_encryptor.h"

#include "ul/host.h"
