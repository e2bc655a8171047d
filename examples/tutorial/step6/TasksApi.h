// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef TASKSAPI_H
#define TASKSAPI_H

#include "services/BwaDispatcherFcgiService.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"
#include "sessions/BwaWebSessionManager.h"

//! [api]
/** The whole API without its listener, so that the tests can have it, too. */
class TasksApi
{
    Q_DISABLE_COPY(TasksApi)

public:
    TasksApi();

    BwaDispatcherFcgiService& root() { return m_root; }

private:
    // Each outlives what stands below it.
    BwaWebSessionManager m_sessions;
    BwaSessionTokenFcgiSessionIdentifier m_identifier;
    BwaDispatcherFcgiService m_root;
};
//! [api]

#endif
