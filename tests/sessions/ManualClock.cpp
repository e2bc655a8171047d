// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/ManualClock.h"

#include <ctime>

#include <sys/syscall.h>
#include <unistd.h>

// With 32 bits musl has only this, because its time_t has 64 there.
#ifndef SYS_clock_gettime
#define SYS_clock_gettime SYS_clock_gettime64
#endif

namespace {

const ManualClock* manualClock = nullptr; // not owned

} // namespace

ManualClock::ManualClock()
{
    manualClock = this;
}

ManualClock::~ManualClock()
{
    manualClock = nullptr;
}

// Takes the place of the C library's function for all that the program loads.
extern "C" int clock_gettime(clockid_t id, timespec* time) noexcept
{
    if (!manualClock || id != CLOCK_MONOTONIC) {
        return static_cast<int>(syscall(SYS_clock_gettime, id, time));
    }
    time->tv_sec = static_cast<time_t>(manualClock->now() / 1000);
    time->tv_nsec = static_cast<long>(manualClock->now() % 1000) * 1000000;
    return 0;
}
