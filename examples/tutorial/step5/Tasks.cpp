// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Tasks.h"

namespace {

constexpr int mostTasks = 1000;

const auto taskFields = BwaRestFields<Task>()
                            .add("id", &Task::id, BwaRestRule::any().readOnly())
                            .add("title", &Task::title, BwaRestRule::length(1, 200))
                            .add("done", &Task::done, BwaRestRule::any().orDefault());

} // namespace

void Tasks::addTo(BwaRestGroup& group)
{
    group.get("/tasks", [this](const BwaRestCall&) { return list(); });
    group.post("/tasks", taskFields,
               [this](const BwaRestCall&, const Task& task) { return add(task); });
    group.get("/tasks/{id:int}",
              [this](const BwaRestCall& call) { return BwaRestReply(taskFields.json(at(call))); });
    group.patch("/tasks/{id:int}", taskFields, [this](const BwaRestCall& call, auto change) {
        Task& task = at(call);
        change(task);
        return BwaRestReply(taskFields.json(task));
    });
    group.remove("/tasks/{id:int}", [this](const BwaRestCall& call) {
        m_tasks.remove(at(call).id);
        return BwaRestReply::empty();
    });
}

Task& Tasks::at(const BwaRestCall& call)
{
    const auto task = m_tasks.find(call.number("id"));
    if (task == m_tasks.end()) {
        throw BwaRestProblem(404, "There is no such task");
    }
    return *task;
}

BwaRestReply Tasks::list() const
{
    QVariantList list;
    for (const Task& task : m_tasks) {
        list.append(taskFields.json(task));
    }
    return list;
}

BwaRestReply Tasks::add(Task task)
{
    if (m_tasks.size() >= mostTasks) {
        throw BwaRestProblem(507, "There are too many tasks");
    }
    task.id = ++m_lastId;
    m_tasks.insert(task.id, task);
    return BwaRestReply::created(QString("/tasks/%1").arg(task.id), taskFields.json(task));
}
