// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef DIAGNOSTICS_H
#define DIAGNOSTICS_H

#include "Statistics.h"

#include <QElapsedTimer>

#include <bwebapi/rest.h>

class BwaFcgiListener;

/** What is for developers: statistics of the replies, and a failure to look at. */
class Diagnostics
{
    Q_DISABLE_COPY(Diagnostics)

public:
    Diagnostics();

    /** Adds "/statistics" and "/failure". */
    void addTo(BwaRestGroup& api);
    /** Counts what @a listener answers; this must outlive it. */
    void count(BwaFcgiListener& listener);

private:
    BwaRestReply statistics();
    qint64 now() const { return m_clock.elapsed() / 1000; }

    QElapsedTimer m_clock;
    Statistics m_statistics;
};

#endif
