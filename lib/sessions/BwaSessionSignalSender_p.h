// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASESSIONSIGNALSENDER_P_H
#define BWASESSIONSIGNALSENDER_P_H

#include <QtGlobal>

class BwaWebSession;

/**
 * Tells a manager which session has sent the signal that it receives. Qt's sender() would tell the
 * same, but searches all sessions of the manager for it.
 *
 * A session makes one of these right before it emits a signal. The first slot of the thread that
 * calls take() gets the session, each later one gets null: it may run because of another signal, to
 * which an application has connected this one, and has to ask sender().
 */
class BwaSessionSignalSender
{
    Q_DISABLE_COPY(BwaSessionSignalSender)

public:
    /** Offers @a session to take() while this object lives. */
    explicit BwaSessionSignalSender(BwaWebSession* session);
    ~BwaSessionSignalSender();

    /** The session that is offered; null when there is none, or when it was taken already. */
    static BwaWebSession* take();

private:
    BwaWebSession* m_previous; // not owned; offered again when this object goes
};

#endif
