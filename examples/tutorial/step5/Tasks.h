// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef TASKS_H
#define TASKS_H

#include <QMap>

#include <bwebapi/rest.h>

struct Task {
    qint64 id = 0;
    QString title;
    bool done = false;
};

/** The tasks, and the routes to them. */
class Tasks
{
public:
    void addTo(BwaRestGroup& group);

private:
    Task& at(const BwaRestCall& call);
    BwaRestReply list() const;
    BwaRestReply add(Task task);

    QMap<qint64, Task> m_tasks;
    qint64 m_lastId = 0;
};

#endif
