// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAEMITTINGSESSION_P_H
#define BWAEMITTINGSESSION_P_H

#include <QtGlobal>

class BwaWebSession;

/** Names the session that emits a signal, as long as this lives, to the slots in its thread. */
class BwaEmittingSession
{
    Q_DISABLE_COPY(BwaEmittingSession)

public:
    explicit BwaEmittingSession(BwaWebSession* session);
    ~BwaEmittingSession();

    /** The session that emits; null when none does. */
    static BwaWebSession* current();

private:
    BwaWebSession* m_previous; // not owned; emits to a slot that made this one emit
};

#endif
