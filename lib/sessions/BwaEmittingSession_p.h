// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAEMITTINGSESSION_P_H
#define BWAEMITTINGSESSION_P_H

#include <QtGlobal>

class BwaWebSession;

/**
 * Names the session that begins to emit a signal, as long as this lives, to the first slot in its
 * thread that asks. A later one may be called through another session's signal, which somebody has
 * connected to this one: it has to ask Qt's sender().
 */
class BwaEmittingSession
{
    Q_DISABLE_COPY(BwaEmittingSession)

public:
    explicit BwaEmittingSession(BwaWebSession* session);
    ~BwaEmittingSession();

    /** The session that has begun to emit; null when none has, or when this was asked before. */
    static BwaWebSession* take();

private:
    BwaWebSession* m_previous; // not owned; what take() would have told before
};

#endif
