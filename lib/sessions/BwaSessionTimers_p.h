// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASESSIONTIMERS_P_H
#define BWASESSIONTIMERS_P_H

class QTimer;

/**
 * Starts and stops the timers of sessions, each in a time that hardly depends on their number.
 *
 * A timer that was started here emits timeout() once, as a precise single-shot timer does: never
 * early, in the order of the due times, those of the same time in the order of their start, also
 * among precise timers of Qt. Its own start() and stop() are not used. Each thread has its own,
 * which ends with its event loop.
 */
namespace BwaSessionTimers {

/** Starts @a timer, from zero if it runs. Its interval must not change while it runs. */
void start(QTimer* timer);
/** Stops @a timer if it runs; to be called before it is destroyed. */
void stop(QTimer* timer);

} // namespace BwaSessionTimers

#endif
