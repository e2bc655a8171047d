// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef STOPSIGNALS_H
#define STOPSIGNALS_H

#include <QSocketNotifier>

#include <functional>

/**
 * Tells the event loop of SIGINT, SIGTERM and SIGHUP, which no longer end the process by
 * themselves. To be made before any other thread, which inherits the blocked signals.
 */
class StopSignals
{
    Q_DISABLE_COPY(StopSignals)

public:
    StopSignals();
    ~StopSignals();

    /** Calls @a action at the first of these signals, also when it has come already. */
    void onFirst(const std::function<void()>& action);

private:
    int m_descriptor; // owned
    QSocketNotifier m_notifier;
};

#endif
