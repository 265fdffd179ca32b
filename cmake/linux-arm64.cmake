# SPDX-License-Identifier: Apache-2.0
# Cross compiler for 64-bit ARM.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(processor arm64)
set(triplet aarch64-linux-gnu)
set(loader ld-linux-aarch64.so.1)
include("${CMAKE_CURRENT_LIST_DIR}/linux-cross.cmake")
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/run-emulated")
