// SPDX-License-Identifier: Apache-2.0
#include "ul/stream.h"

namespace ul {

IWriteBarrier::~IWriteBarrier() = default;
IOutStream::~IOutStream() = default;
IInStream::~IInStream() = default;

} // namespace ul
