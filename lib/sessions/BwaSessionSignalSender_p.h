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
 * A session makes one of these right before it emits a signal. The first slot that calls take()
 * gets the session. Each later one gets null and must ask sender(), because it may have been called
 * by a different signal, one that an application emits in answer to this one. Each thread has its
 * own.
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
