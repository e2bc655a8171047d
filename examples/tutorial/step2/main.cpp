// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpJsonHeader.h"
#include "json/BwaJson.h"
#include "services/BwaDispatcherFcgiService.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"

#include <QCoreApplication>
#include <QList>
#include <QVariant>

#include <cstdio>

namespace {

//! [task]
struct Task {
    int id = 0;
    QString title;
    bool isDone = false;
};

QVariantMap toJson(const Task& task)
{
    return {{QStringLiteral("id"), task.id},
            {QStringLiteral("title"), task.title},
            {QStringLiteral("done"), task.isDone}};
}
//! [task]

//! [send]
void sendJson(BwaFcgiRequest* request, const QVariant& json)
{
    request->out() << BwaHttpJsonHeader(QStringLiteral("utf-8")) << BwaJson::write(json).constData()
                   << '\n';
}
//! [send]

} // namespace

//! [processor]
class TasksProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    TasksProcessor()
        : BwaStandardFcgiRequestProcessor(nullptr)
        , m_tasks({{1, QStringLiteral("Buy tea"), false}, {2, QStringLiteral("Boil water"), true}})
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        QVariantList tasks;
        for (const Task& task : m_tasks) {
            tasks.append(toJson(task));
        }
        sendJson(request, tasks);
        delete request;
    }

private:
    const QList<Task> m_tasks;
};
//! [processor]

//! [main]
int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: tasks SOCKET\n", stderr);
        return 2;
    }
    QCoreApplication application(argc, argv);

    BwaDispatcherFcgiService root;
    root.addService(QStringLiteral("tasks"), new BwaStandardFcgiService(new TasksProcessor));

    BwaFcgiListener listener({{QStringLiteral("/api"), &root}});
    QObject::connect(&listener, &BwaFcgiListener::listeningError, [] {
        std::fputs("tasks: cannot listen\n", stderr);
        QCoreApplication::exit(1);
    });
    listener.listen(QString::fromLatin1(argv[1]));
    return application.exec();
}
//! [main]
