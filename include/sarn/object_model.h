// SPDX-License-Identifier: Apache-2.0
/// \file
/// The object model of all classes of the library.
///
/// Objects are reference-counted. ul::make creates them with one reference, and they are passed as ul::P of their
/// interface. A returned ul::P holds its own reference; a null one means "none". Copyable classes copy member by
/// member; the copy is a separate object with its own count.
///
/// Process-wide objects (CCipherManager, CDigestManager, COpenSSLInit and its companions) are reached through a static
/// get(), which creates them on first use from any thread. They live until the process ends. A protected
/// disposeGlobalInstance() empties such an object for an orderly shutdown; the library does not fill it again. Each
/// class keeps its object in a static member, g_pInstanceSlot: the library exports it beside get(), which no compiler
/// does for a local variable of get().
///
/// Every failure is raised: ul::CInvalidArgError for arguments, ul::CBadStateError for calls in the wrong state,
/// ul::CError for all else. Unless documented otherwise the second text is empty, the code is -1, there is no cause,
/// and the properties are values of the message.
#pragma once

#include "sarn/export.h"

#include "ul/base.h"
#include "ul/buffer.h"
#include "ul/error.h"
#include "ul/pointer.h"
#include "ul/string.h"
