// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Statistics.h"

namespace {

constexpr int length = 60; // seconds that are kept

} // namespace

Statistics::Statistics()
    : m_seconds(length)
    , m_latest(0)
{
}

void Statistics::count(qint64 now, int statusCode)
{
    ++m_statuses[statusCode];
    Second& current = second(now);
    if (statusCode >= 500) {
        ++current.failed;
    } else if (statusCode >= 400) {
        ++current.refused;
    } else {
        ++current.succeeded;
    }
}

QVector<Statistics::Second> Statistics::lastMinute(qint64 now)
{
    second(now);
    const int oldest = static_cast<int>((now + 1) % length);
    return m_seconds.mid(oldest) + m_seconds.mid(0, oldest);
}

// Clears the seconds that have begun since the latest one; after a minute without requests, all.
Statistics::Second& Statistics::second(qint64 now)
{
    m_latest = qMax(m_latest, now - length);
    while (m_latest < now) {
        ++m_latest;
        m_seconds[static_cast<int>(m_latest % length)] = Second();
    }
    return m_seconds[static_cast<int>(now % length)];
}
