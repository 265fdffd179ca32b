# SPDX-License-Identifier: Apache-2.0
# Cross compiler for IBM Z, whose most significant byte comes first.
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(processor s390x)
set(triplet s390x-linux-gnu)
set(loader ld64.so.1)
include("${CMAKE_CURRENT_LIST_DIR}/linux-cross.cmake")
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/run-emulated")
