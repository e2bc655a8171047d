// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASESSIONTIMERS_P_H
#define BWASESSIONTIMERS_P_H

class QTimer;

/**
 * Starts and stops the timers of sessions, each in a time that hardly depends on their number.
 *
 * A timer that was started here emits timeout() once, as a precise single-shot timer of Qt does:
 * never early, in the order of the times at which the timers are due, and for the same time in the
 * order in which they were started. That order includes the application's own precise timers.
 *
 * Of the QTimer only the interval and the signal are used, not its start() and stop(). A timer is
 * started and stopped in one thread; when that thread ends, its timers no longer fire.
 */
namespace BwaSessionTimers {

/** Starts @a timer, from zero if it runs. Its interval must not change while it runs. */
void start(QTimer* timer);
/** Stops @a timer if it runs; to be called before it is destroyed. */
void stop(QTimer* timer);

} // namespace BwaSessionTimers

#endif
