# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# ARMv7 with hardware floating point and the C library musl.
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(bwa_triplet arm-linux-musleabihf)
set(bwa_emulator qemu-arm)
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi) # no notes on the ABI of GCC before 7.1, which built nothing here
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
