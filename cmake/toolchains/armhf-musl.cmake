# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# ARMv7 with hardware floating point and the C library musl.
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(bwa_triplet arm-linux-musleabihf)
set(bwa_emulator qemu-arm)
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi) # GCC tells what changed before 7.1: nothing old is linked
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
