# SPDX-License-Identifier: Apache-2.0
# Cross compiler for 32-bit x86.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(processor i386)
set(triplet i686-linux-gnu)
set(loader ld-linux.so.2)
include("${CMAKE_CURRENT_LIST_DIR}/linux-cross.cmake")
