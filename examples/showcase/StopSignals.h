// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef STOPSIGNALS_H
#define STOPSIGNALS_H

#include <QSocketNotifier>

/**
 * Makes SIGINT, SIGTERM and SIGHUP end the event loop of the application, so that everything is
 * destroyed in order. To be made before any other thread, which inherits the blocked signals.
 */
class StopSignals
{
    Q_DISABLE_COPY(StopSignals)

public:
    StopSignals();
    ~StopSignals();

private:
    int m_descriptor; // owned
    QSocketNotifier m_notifier;
};

#endif
