// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef RESIDENTMEMORY_H
#define RESIDENTMEMORY_H

#include <QtGlobal>

#include <fstream>

#include <unistd.h>

/** Bytes of this process that are in memory. */
inline qint64 residentBytes()
{
    std::ifstream pages("/proc/self/statm");
    qint64 size = 0;
    qint64 resident = 0;
    pages >> size >> resident;
    return resident * ::sysconf(_SC_PAGESIZE);
}

#endif
