// SPDX-License-Identifier: Apache-2.0
/// \file
/// The whole base library.
#pragma once

/// \namespace ul
/// The base library.

#include "ul/array.h"
#include "ul/base.h"
#include "ul/buffer.h"
#include "ul/buffer_stream.h"
#include "ul/data_stream.h"
#include "ul/error.h"
#include "ul/file.h"
#include "ul/global_slot.h"
#include "ul/ini.h"
#include "ul/list.h"
#include "ul/little_endian.h"
#include "ul/log.h"
#include "ul/map.h"
#include "ul/mutex.h"
#include "ul/path.h"
#include "ul/pointer.h"
#include "ul/props.h"
#include "ul/random.h"
#include "ul/stream.h"
#include "ul/string.h"
#include "ul/thread.h"
#include "ul/version.h"
