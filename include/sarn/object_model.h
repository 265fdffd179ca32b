// SPDX-License-Identifier: Apache-2.0
/// \file
/// What every class of the library shares.
///
/// Objects are reference-counted: they are created by ul::make, start with one reference and travel as ul::P of their
/// interface. A returned ul::P holds a reference of its own; a null one means "none". Classes that may be copied copy
/// member by member; the copy is an object of its own with its own count.
///
/// Process-wide objects (CCipherManager, CDigestManager, COpenSSLInit and its companions) are reached through a static
/// get(), which creates them on first use, from any thread. They live until the process ends. A protected
/// disposeGlobalInstance() empties such an object for an orderly shutdown; it stays empty from then on. Each class
/// keeps its object in a static member, g_pInstanceSlot: the library exports it beside get(), which no compiler does
/// for a local variable of get().
///
/// Every failure is thrown: ul::CInvalidArgError for arguments, ul::CBadStateError for misuse of a running object,
/// ul::CError for all else, with an empty second text, code -1, no cause, and values of the message as properties.
#pragma once

#include "sarn/export.h"

#include "ul/base.h"
#include "ul/buffer.h"
#include "ul/error.h"
#include "ul/pointer.h"
#include "ul/string.h"
