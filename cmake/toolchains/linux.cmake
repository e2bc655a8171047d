# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# What the toolchain files share. Each of them sets bwa_triplet and bwa_emulator and includes this.
# Programs are built against CMAKE_SYSROOT, a copy of the device's file system, and tests run in the
# emulator.

set(CMAKE_SYSTEM_NAME Linux)
if(NOT CMAKE_CXX_COMPILER)
    set(CMAKE_CXX_COMPILER ${bwa_triplet}-g++)
endif()
set(CMAKE_LIBRARY_ARCHITECTURE ${bwa_triplet})

if(NOT CMAKE_SYSROOT)
    message(FATAL_ERROR "Set CMAKE_SYSROOT to the root folder of the device's files")
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
    ${CMAKE_SYSROOT}/usr/lib/${bwa_triplet}/pkgconfig:${CMAKE_SYSROOT}/usr/lib/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)

find_program(BWA_EMULATOR ${bwa_emulator})
if(BWA_EMULATOR)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${BWA_EMULATOR} -L ${CMAKE_SYSROOT})
endif()

# Qt's code generators run on the building machine.
set(CMAKE_PROJECT_INCLUDE ${CMAKE_CURRENT_LIST_DIR}/host-qt-tools.cmake)
