// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include <QMap>

#include <bwebapi/rest.h>

constexpr int mostTasks = 1000;
constexpr int mostBodyBytes = 64 * 1024;

struct Task {
    qint64 id = 0;
    QString title;
    bool done = false;
};

//! [rules]
const auto taskFields = BwaRestFields<Task>()
                            .add("id", &Task::id, BwaRestRule::any().readOnly())
                            .add("title", &Task::title, BwaRestRule::length(1, 200))
                            .add("done", &Task::done, BwaRestRule::any().orDefault());
//! [rules]

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);

    QMap<qint64, Task> tasks;
    qint64 lastId = 0;

    BwaRestService api;
    api.get("/tasks", [&tasks](const BwaRestCall&) {
        QVariantList list;
        for (const Task& task : tasks) {
            list.append(taskFields.json(task));
        }
        return BwaRestReply(list);
    });

    //! [post]
    api.limit(mostBodyBytes);
    api.post("/tasks", taskFields, [&](const BwaRestCall&, Task task) -> BwaRestReply {
        if (tasks.size() >= mostTasks) {
            return BwaRestProblem(507, "There are too many tasks");
        }
        task.id = ++lastId;
        tasks.insert(task.id, task);
        return BwaRestReply(taskFields.json(task), 201);
    });
    //! [post]

    return BwaRestServer({{"/api", &api}}).accessLog().run(QString::fromLatin1(argv[1]));
}
