# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# ARMv8 in its 64-bit state.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(bwa_triplet aarch64-linux-gnu)
set(bwa_emulator qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
