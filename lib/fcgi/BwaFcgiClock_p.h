// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGICLOCK_P_H
#define BWAFCGICLOCK_P_H

#include <chrono>
#include <cstdint>

/**
 * The steady clock, for deadlines and durations: it goes on evenly when the system's time is set.
 */
namespace BwaFcgiClock {

/** Milliseconds of the steady clock. */
inline std::int64_t now()
{
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

} // namespace BwaFcgiClock

#endif
