// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef RATELIMIT_H
#define RATELIMIT_H

#include <QString>

#include <vector>

/**
 * Counts events by a key, such as an account or an address, from minute to minute.
 *
 * It takes the same memory for many keys as for few, because keys share counters. Which keys share
 * one is drawn at the start of the program, so that nobody can choose whom to lock out.
 */
class RateLimit
{
public:
    /** Throws std::runtime_error when libsodium cannot be used. */
    explicit RateLimit(int mostInAMinute);

    /** Whether no more is allowed in this minute. @a now is in seconds, and never goes back. */
    bool isReached(const QString& key, qint64 now);
    /** Counts an event. @a now as above. */
    void count(const QString& key, qint64 now);
    /** Takes back an event of this minute. */
    void takeBack(const QString& key, qint64 now);

private:
    int& counter(const QString& key, qint64 now);

    int m_mostInAMinute;
    qint64 m_minute; // that of the counters
    std::vector<int> m_counters;
    std::vector<unsigned char> m_secret; // decides who shares a counter
};

#endif
