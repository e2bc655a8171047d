// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef STATISTICS_H
#define STATISTICS_H

#include <QMap>
#include <QVector>

/**
 * Counts replies: those of the last minute by second, and all by status. Takes no more memory and
 * no more time for many requests than for few.
 */
class Statistics
{
public:
    struct Second {
        int succeeded = 0; // statuses up to 399
        int refused = 0;   // 400 to 499: the client's fault
        int failed = 0;    // from 500: the service's
    };

    Statistics();

    /** Counts a reply. @a now is in seconds since any start, and never goes back. */
    void count(qint64 now, int statusCode);
    /** 60 elements, the oldest first; the last one is the second that has begun. */
    QVector<Second> lastMinute(qint64 now);
    /** How many replies had each status since the start. */
    QMap<int, int> statuses() const { return m_statuses; }

private:
    Second& second(qint64 now);

    QVector<Second> m_seconds; // the second s stands at s % 60
    qint64 m_latest;           // the last second in m_seconds; what lies before its minute is gone
    QMap<int, int> m_statuses;
};

#endif
