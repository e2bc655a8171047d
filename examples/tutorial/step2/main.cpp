// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include <QMap>

#include <bwebapi/rest.h>

//! [task]
struct Task {
    qint64 id = 0;
    QString title;
    bool done = false;
};

const auto taskFields =
    BwaRestFields<Task>().add("id", &Task::id).add("title", &Task::title).add("done", &Task::done);
//! [task]

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);

    //! [list]
    const QMap<qint64, Task> tasks = {{1, {1, "Buy tea", false}}, {2, {2, "Boil water", true}}};

    BwaRestService api;
    api.get("/tasks", [&tasks](const BwaRestCall&) {
        QVariantList list;
        for (const Task& task : tasks) {
            list.append(taskFields.json(task));
        }
        return BwaRestReply(list);
    });
    //! [list]

    return BwaRestServer({{"/api", &api}}).accessLog().run(QString::fromLatin1(argv[1]));
}
