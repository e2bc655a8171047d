// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "hostile/Measuring.h"

#include <ctime>
#include <fstream>
#include <stdexcept>
#include <string>

#include <malloc.h>

namespace {

Cost lastCost;

qint64 residentBytes(const std::string& field)
{
    std::ifstream status("/proc/self/status");
    std::string name;
    while (status >> name) {
        qint64 kibibytes = 0;
        if (name == field && status >> kibibytes) {
            return kibibytes * 1024;
        }
        std::getline(status, name);
    }
    throw std::runtime_error("/proc/self/status has no " + field);
}

// glibc keeps what was freed, which a call could then use unseen; musl gives it back by itself.
#ifdef __GLIBC__
void giveFreedMemoryBack()
{
    malloc_trim(0);
}
#else
void giveFreedMemoryBack()
{
}
#endif

void forgetPeak()
{
    giveFreedMemoryBack();
    std::ofstream references("/proc/self/clear_refs");
    references << "5" << std::flush;
    if (!references) {
        throw std::runtime_error("/proc/self/clear_refs cannot be written");
    }
}

} // namespace

// Callgrind counts while this runs, and knows it by its name.
[[gnu::noinline]] bool callMeasured(const std::function<bool()>& call, std::clock_t* duration)
{
    const std::clock_t begin = std::clock();
    const bool isAsExpected = call();
    *duration = std::clock() - begin;
    return isAsExpected;
}

void measure(const std::function<bool()>& call)
{
    forgetPeak();
    const qint64 before = residentBytes("VmRSS:");
    std::clock_t duration = 0;
    if (!callMeasured(call, &duration)) {
        throw std::runtime_error("the library did not do what is to be measured");
    }
    lastCost.milliseconds = 1000.0 * static_cast<double>(duration) / CLOCKS_PER_SEC;
    lastCost.bytes = residentBytes("VmHWM:") - before;
}

Cost measuredCost()
{
    return lastCost;
}
