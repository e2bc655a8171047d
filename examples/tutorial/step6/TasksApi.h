// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef TASKSAPI_H
#define TASKSAPI_H

#include "Tasks.h"

//! [api]
/** The whole API without its server, so that the tests can have it, too. */
class TasksApi
{
public:
    TasksApi();

    BwaRestService& service() { return m_service; }

private:
    void addLogin();

    // Each member must outlive the members below it.
    BwaRestSessions m_sessions{"tasks"};
    Tasks m_tasks;
    BwaRestService m_service;
};
//! [api]

#endif
